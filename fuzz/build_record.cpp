// Records of the build state: one of an action, or where the first byte is odd, one of what actions share.
#include "fuzz/fuzz_input.hpp"
#include "host/tool/recorded_action.hpp"

namespace {

using namespace tool;

template <typename RECORD>
void check(QByteArray const& bytes, std::optional<RECORD> (*read)(QByteArray const&)) {
    std::optional<RECORD> const record = read(bytes);
    if (!record)
        return;
    QByteArray const written = to_bytes(*record);
    std::optional<RECORD> const again = read(written);
    fuzz::require(again && to_bytes(*again) == written, "a record that was read reads the same again");
    fuzz::require(!read(written + '\0') && !read(written.chopped(1)), "a record is read as a whole or not at all");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, std::size_t size) {
    if (size < 1)
        return 0;
    QByteArray const content(reinterpret_cast<char const*>(bytes) + 1, static_cast<int>(size) - 1);
    if (bytes[0] % 2 != 0) {
        check(content, to_action_setting);
        return 0;
    }
    check(content, to_recorded_action);
    if (std::optional<RECORDED_ACTION> const action = to_recorded_action(content))
        fuzz::require(action->announced_targets <= action->targets.size() &&
                          action->end <= RECORDED_ACTION::END::made_no_file,
                      "a record makes sense");
    return 0;
}
