// The function behind `create_image_database_action_name`.
#include "processor/host/image_database_entry.hpp"

#include "imagedb/action_image_info_db.hpp"

extern "C" Q_DECL_EXPORT ACTION_INTERFACE* zab_create_image_database_action(PROCESSOR_INTERFACE& processor,
                                                                            QString const& expansion) {
    return new ACTION_IMAGE_INFO_DB(processor, expansion);
}

static_assert(std::is_same_v<decltype(zab_create_image_database_action), CREATE_IMAGE_DATABASE_ACTION>);
