// Database tables from XML.
#include "fuzz/fuzz_input.hpp"
#include "host/framework/xml_tables.hpp"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, std::size_t size) {
    fuzz::INPUT_FILE const input(fuzz::grown_text(bytes, size));
    QString const table = QStringLiteral("table");
    QString error;
    framework::XML_TABLES tables;
    bool const loaded = tables.load(table, QString::fromStdString(input.path()), error);
    fuzz::require(loaded == error.isEmpty() && loaded == tables.has_table(table), "a refused table says why");
    for (QString const& key : tables.keys(table)) {
        fuzz::require(!key.isEmpty(), "every row has a key");
        tables.value(table, key, QStringLiteral("name"));
    }
    return 0;
}
