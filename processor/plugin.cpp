#include "processor/plugin.hpp"

#include "processor/texture_processor.hpp"

QVector<PROCESSOR_INTERFACE*> PLUGIN::create_processors() {
    QVector<PROCESSOR_INTERFACE*> processors;
    processors.reserve(1);
    processors.append(new TEXTURE_PROCESSOR);
    return processors;
}
