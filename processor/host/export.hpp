// Which side of the library border a declaration stands on. The host's library exports the framework, everyone else
// imports it: plug-in and host tool must share one set of static members and type information.
#pragma once

#include <QtGlobal>

#if defined(ZAB_SHARED_LIBRARY)
#define ZAB_SHARED_API Q_DECL_EXPORT
#else
#define ZAB_SHARED_API Q_DECL_IMPORT
#endif
