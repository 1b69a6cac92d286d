#include "atlas/atlas_messages.hpp"

#include <QString>

#include <cstdio>

void print_atlas_text(std::string const& text) {
    QByteArray const local = QString::fromLatin1(text.data(), static_cast<int>(text.size())).toLocal8Bit();
    // In one piece, so that messages of actions that run side by side do not mix within a line.
    std::fwrite(local.constData(), 1, static_cast<std::size_t>(local.size()), stderr);
    std::fflush(stderr);
}

void report_atlas_error(std::string const& message) {
    print_atlas_text("*** Error: " + message + '\n');
}

void report_atlas_warning(std::string const& message) {
    print_atlas_text("Warning: " + message + '\n');
}
