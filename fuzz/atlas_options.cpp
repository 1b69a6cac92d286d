// The option list of the atlas builder: an argument a line.
#include "atlas/atlas_options.hpp"
#include "fuzz/fuzz_input.hpp"

#include <algorithm>
#include <string_view>

namespace {

constexpr std::array options_with_argument = {ATLAS_OPTION::width, ATLAS_OPTION::height, ATLAS_OPTION::depth,
                                              ATLAS_OPTION::output};
constexpr std::array<char const*, atlas_option_count> names = {
    "-h", "-help", "-?", "-nomipmap", "-volume", "-halftexel", "-width", "-height", "-depth", "-o"};

/// What is said on standard error while an object of this class lives, which millions of inputs would fill a disk with.
class MESSAGES {
public:
    MESSAGES() : real_(stderr), stream_(open_memstream(&text_, &size_)) {
        fuzz::require(stream_ != nullptr, "there is memory for messages");
        stderr = stream_;
    }
    MESSAGES(MESSAGES const&) = delete;
    MESSAGES& operator=(MESSAGES const&) = delete;
    ~MESSAGES() {
        static_cast<void>(end());
        std::free(text_);
    }

    std::string_view end() {
        if (stderr == stream_) {
            stderr = real_;
            std::fclose(stream_);
        }
        return {text_, size_};
    }

private:
    char* text_ = nullptr;
    std::size_t size_ = 0;
    std::FILE* real_;
    std::FILE* stream_;
};

std::vector<std::string> lines_of(std::string_view text) {
    std::vector<std::string> lines;
    for (std::size_t at = 0; at <= text.size();) {
        std::size_t const end = std::min(text.find('\n', at), text.size());
        lines.emplace_back(text.substr(at, end - at));
        at = end + 1;
    }
    return lines;
}

bool has_page_size(ATLAS_OPTIONS const& options, ATLAS_OPTION option) {
    return !options.is_set(option) || options.number(option).value_or(0) >= 2;
}

/// The same settings as a list of their own, each option once.
std::vector<std::string> plain_list(ATLAS_OPTIONS const& options) {
    std::vector<std::string> list = {""};
    for (std::size_t i = 0; i < atlas_option_count; ++i) {
        auto const option = static_cast<ATLAS_OPTION>(i);
        if (options.is_set(option))
            list.emplace_back(names[i]);
        if (std::string const* const argument = options.argument(option))
            list.push_back(*argument);
    }
    list.insert(list.end(), options.file_names().begin(), options.file_names().end());
    return list;
}

void check_valid(ATLAS_OPTIONS const& options) {
    bool const is_volume = options.is_set(ATLAS_OPTION::volume);
    fuzz::require(!options.file_names().empty() && options.argument(ATLAS_OPTION::output) != nullptr &&
                      (!is_volume || options.is_set(ATLAS_OPTION::no_mip_map)),
                  "what an atlas needs is there");
    for (ATLAS_OPTION const side : {ATLAS_OPTION::width, ATLAS_OPTION::height})
        fuzz::require(is_volume || has_page_size(options, side), "a side is a number above 1");
    fuzz::require(!is_volume || has_page_size(options, ATLAS_OPTION::depth), "a depth is a number above 1");

    MESSAGES said_again;
    ATLAS_OPTIONS const again(plain_list(options));
    said_again.end();
    fuzz::require(again.valid() && std::ranges::equal(again.file_names(), options.file_names()),
                  "what was read reads the same as a list of its own");
    for (std::size_t i = 0; i < atlas_option_count; ++i)
        fuzz::require(again.is_set(static_cast<ATLAS_OPTION>(i)) == options.is_set(static_cast<ATLAS_OPTION>(i)),
                      "every option comes back");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, std::size_t size) {
    std::vector<std::string> arguments = lines_of({reinterpret_cast<char const*>(bytes), size});
    arguments.insert(arguments.begin(), "");
    MESSAGES messages;
    ATLAS_OPTIONS const options(arguments);
    bool const has_error = messages.end().find("*** Error: ") != std::string_view::npos;
    fuzz::require(options.valid() != has_error, "a list is refused with an error");

    auto const files = options.file_names();
    fuzz::require(files.size() < arguments.size() && std::equal(files.rbegin(), files.rend(), arguments.rbegin()),
                  "file names are the end of the list");
    for (ATLAS_OPTION const option : options_with_argument) {
        std::string const* const argument = options.argument(option);
        fuzz::require(argument == nullptr || options.is_set(option), "an option with an argument is set");
        std::optional<std::int32_t> const number = options.number(option);
        fuzz::require(!number || read_integer(std::to_string(*number)) == number, "a number reads the same again");
    }
    if (options.valid())
        check_valid(options);
    return 0;
}
