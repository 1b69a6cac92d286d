// The plug-in's offer of an image-information database. No source file asks for one, so no processor makes its action:
// a host that runs a database step creates one action for each expansion, through a function that the plug-in library
// exports under the name below, and hands it to its scheduler like any other action.
#pragma once

#include <QString>

class ACTION_INTERFACE;
class PROCESSOR_INTERFACE;

inline constexpr char const* create_image_database_action_name = "zab_create_image_database_action";

/// `processor` is one of the plug-in's own and outlives the action. An empty expansion name stands for the core data.
/// The caller owns the action.
using CREATE_IMAGE_DATABASE_ACTION = ACTION_INTERFACE*(PROCESSOR_INTERFACE& processor, QString const& expansion);
