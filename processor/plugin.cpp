#include "processor/plugin.hpp"

#include "processor/texture_processor.hpp"

QVector<PROCESSOR_INTERFACE*> PLUGIN::create_processors() {
    return {new TEXTURE_PROCESSOR};
}
