// The two functions that Qt's plug-in loader looks for, and the metadata block that it reads from the file before it
// loads anything. Both are written out instead of being left to moc: the block must say what hosts built on Qt 5.3 and
// later expect, whichever Qt builds this library, and a newer moc would write its own version and another encoding.
#include "processor/plugin.hpp"

#include <QPointer>

#include <QtGlobal>

#if defined(Q_CC_GNU) && defined(Q_OS_UNIX)
#define ZAB_METADATA_SECTION __attribute__((section(".qtmetadata"), used))
#else
#define ZAB_METADATA_SECTION
#endif

namespace {

/// The signature, then binary JSON as Qt 5.0 to 5.14 write it: little-endian words, offsets counted from the object's
/// first byte (the one behind "qbjs" and the version). A value's word holds its type in bits 0 to 2 (1 bool, 2 number,
/// 3 string, 5 object), 8 for a number stored in the word itself or a string of 8-bit characters, 16 for a key of 8-bit
/// characters, and from bit 5 on the number or the offset of the data. Members stand in the order of their declaration;
/// the table at the end lists them sorted by key.
ZAB_METADATA_SECTION constexpr unsigned char metadata[] = {
    'Q',  'T',  'M',  'E', 'T', 'A', 'D', 'A', 'T', 'A', ' ', ' ',  //
    'q',  'b',  'j',  's', 1,   0,   0,   0,                        // format version 1
    140,  0,    0,    0,   11,  0,   0,   0,   120, 0,   0,   0,    // size; an object of 5; table at 120
    0x1b, 0x03, 0,    0,   3,   0,   'I', 'I', 'D', 0,   0,   0,    // at 12: a string at 24
    14,   0,    'q',  'e', '.', 'Z', 'A', 'B', '.', 'T', 'e', 'x', 't', 'u', 'r', 'e',  //
    0x1b, 0x07, 0,    0,   9,   0,   'c', 'l', 'a', 's', 's', 'N', 'a', 'm', 'e', 0,    // at 40: a string at 56
    6,    0,    'P',  'L', 'U', 'G', 'I', 'N',                                          //
    0x1a, 0x60, 0xa0, 0,   7,   0,   'v', 'e', 'r', 's', 'i', 'o', 'n', 0,   0,   0,    // at 64: the number 0x050300
    0x11, 0,    0,    0,   5,   0,   'd', 'e', 'b', 'u', 'g', 0,                        // at 80: false
    0x95, 0x0d, 0,    0,   8,   0,   'M', 'e', 't', 'a', 'D', 'a', 't', 'a', 0,   0,    // at 92: an object at 108
    12,   0,    0,    0,   1,   0,   0,   0,   0,   0,   0,   0,                        // size; an object of 0
    12,   0,    0,    0,   92,  0,   0,   0,   40,  0,   0,   0,   80,  0,   0,   0,
    64,   0,    0,    0,  // IID MetaData className debug version
};
static_assert(sizeof metadata == 12 + 8 + 140);

}  // namespace

extern "C" Q_DECL_EXPORT char const* qt_plugin_query_metadata() {
    return reinterpret_cast<char const*>(metadata);
}

/// The one PLUGIN object. The loader may destroy it; the next call then makes a new one.
extern "C" Q_DECL_EXPORT QObject* qt_plugin_instance() {
    static QPointer<QObject> instance;
    if (instance.isNull())
        instance = new PLUGIN;
    return instance;
}
