#include "processor/texture_rule_schema.hpp"

TEXTURE_RULE_SCHEMA::TEXTURE_RULE_SCHEMA()
    : RULE_SCHEMA(QStringLiteral("Texture"), QStringLiteral("Texture processor metadata")) {
    add_property(QStringLiteral("TargetPath"), QStringLiteral("Name of the target folder for converted textures."));
    add_property(QStringLiteral("TargetBaseName"), QStringLiteral("Name of the target file without extension."));
    add_property(QStringLiteral("NormalMap"),
                 QStringLiteral("Does the file to be converted need special normal map processing"));
    add_property(QStringLiteral("ParallaxMap"),
                 QStringLiteral("Channels are shuffled in parallax maps: A->B, R->A, 255->R"));
    add_property(QStringLiteral("CompressionFormat"), QStringLiteral("Which compression format to use"));
    add_property(QStringLiteral("Mipmaps"), QStringLiteral("Whether to use mipmap generation"));
    add_property(QStringLiteral("NeedGammaCorrection"), QStringLiteral("Is Gamma correction Necessary"));
    add_property(QStringLiteral("AverageGrey"),
                 QStringLiteral("In alpha detection, the amount of grey before 1 channel alpha is used"));
    add_property(QStringLiteral("MinAlpha"),
                 QStringLiteral("Value where this and lower values on the alpha channel are considered black"));
    add_property(QStringLiteral("MaxAlpha"),
                 QStringLiteral("Value where this and greater values on the alpha channel are considered white"));
    add_property(QStringLiteral("PremultipliedAlpha"),
                 QStringLiteral("Determines whether textures should be converted to premultiplied alpha format. All "
                                "textures that contain alpha should ideally be converted into this format."));
    add_property(QStringLiteral("MipMapFilterType"),
                 QStringLiteral("Specify the MipMap Filter type, options are Box, Triangle and Kaiser"));
    add_property(QStringLiteral("Compressor"),
                 QStringLiteral("Specifies the type of compressor to run e.g. ATI or nvidia etc."));
    add_property(QStringLiteral("UseHighQualityOneBitAlphaFiltering"),
                 QStringLiteral("Used for alpha test trees.  Is much slower to process but produces much better "
                                "results.  Alpha blending is obviously much better!"));
    add_property(
        QStringLiteral("ExportExtraAlphaBlendTexture"),
        QStringLiteral(
            "If this is set to true then an *_ab.dds file is also generated in addition to the usual *.dds file."));
    add_property(QStringLiteral("ExtraAlphaBlendTextureCompressor"),
                 QStringLiteral("Allows a different compressor than the standard one.  Can be ATI, nvidia, etc.  If "
                                "this isn't defined then the standard compressor is used."));
    add_property(QStringLiteral("ExtraAlphaBlendCompressionFormat"),
                 QStringLiteral("Which compression format to use."));
    add_property(QStringLiteral("ExtraAlphaBlendPremultipliedAlpha"),
                 QStringLiteral("Determines whether textures should be converted to premultiplied alpha format. All "
                                "textures that contain alpha should ideally be converted into this format."));
    add_property(QStringLiteral("DropMips"), QStringLiteral("Drops as many mips from the top. Default: 0"));
    add_property(QStringLiteral("MaxSize"),
                 QStringLiteral("Drops mips from the top to fit in this size in both dimensions."));
    add_property(
        QStringLiteral("FastestCompressionQuality"),
        QStringLiteral(
            "Set this to true to get faster compression.  This option reduces the amount of processing that might "
            "result in colour shifts.  Might also introduce blocking artefacts so should be used carefully."));
}
