#include "processor/plugin.hpp"

#include "blocks/simd_level.hpp"
#include "processor/texture_processor.hpp"

#include <QtGlobal>

QVector<PROCESSOR_INTERFACE*> PLUGIN::create_processors() {
    QByteArray const simd = qgetenv("ZAB_SIMD");
    if (!simd.isEmpty() && !blocks::limit_simd({simd.constData(), static_cast<std::size_t>(simd.size())}))
        qWarning("ZAB_SIMD is '%s'; it takes scalar, sse4, avx2 or avx512", simd.constData());
    QVector<PROCESSOR_INTERFACE*> processors;
    processors.reserve(1);
    processors.append(new TEXTURE_PROCESSOR);
    return processors;
}
