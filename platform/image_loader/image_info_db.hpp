// The engine's image-information database: what the headers of a game's textures say, gathered by a build and saved as
// one file, so that a runtime knows sizes and formats without opening the textures. IMAGE_INFO_DB_READER reads the file
// back.
#pragma once

#include "platform/image_loader/image.hpp"
#include "platform/qe/file_name.hpp"
#include "platform/qe/uni_string.hpp"

#include <map>
#include <string>

namespace IMAGE_LOADER {

class IMAGE_INFO_DB {
public:
    /// The one database of the process, made by the first call. It must not be used from two threads at once.
    static IMAGE_INFO_DB& inst();
    /// Empties the database of the process.
    static void destroy();

    IMAGE_INFO_DB() = default;
    IMAGE_INFO_DB(IMAGE_INFO_DB const&) = delete;
    IMAGE_INFO_DB& operator=(IMAGE_INFO_DB const&) = delete;
    ~IMAGE_INFO_DB() = default;

    /// An earlier record of the same name is replaced. `user_number` is kept beside the record.
    void add_info(QE::FileName const& name, IMAGE_INFO const& info, std::uint32_t user_number);

    /// Writes the file, whole or not at all. The same records give the same bytes, in whatever order they came. False
    /// on failure, and `cause` says why; a file that stood there stays. Throws std::bad_alloc.
    bool save(QE::UniString const& path, std::string& cause) const;

private:
    struct RECORD {
        IMAGE_INFO info;
        std::uint32_t user_number = 0;
    };
    /// Sorted by the names' bytes, as the file is.
    std::map<std::string, RECORD> records_;
};

}  // namespace IMAGE_LOADER
