// What comes from a worker, whose memory a broken image may have damaged. The first byte says in what pieces it comes.
#include "host/tool/worker_messages.hpp"
#include "fuzz/fuzz_input.hpp"

#include <algorithm>
#include <stdexcept>
#include <string_view>

#include <sys/socket.h>

namespace {

using namespace tool;

/// Two ends of a connection for all inputs; nothing is left in it between two of them.
struct CONNECTION {
    CONNECTION() {
        fuzz::require(socketpair(AF_UNIX, SOCK_STREAM, 0, ends) == 0, "there is a connection");
        int const room = 1 << 20;
        setsockopt(ends[0], SOL_SOCKET, SO_SNDBUF, &room, sizeof room);
    }
    int ends[2];
};

CONNECTION& connection() {
    static CONNECTION it;
    return it;
}

std::string received() {
    // Once for all: taking it anew would be most of the work.
    static std::string bytes(1 << 20, '\0');
    ssize_t const count = recv(connection().ends[1], bytes.data(), bytes.size(), MSG_DONTWAIT);
    return bytes.substr(0, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
}

/// All messages of these bytes; fewer when one is damaged.
std::vector<MESSAGE> messages_in(std::string_view bytes, std::size_t piece, bool& is_sound) {
    std::vector<MESSAGE> messages;
    MESSAGE_READER reader;
    is_sound = true;
    for (std::size_t at = 0; at < bytes.size() && is_sound; at += piece) {
        std::string_view const part = bytes.substr(at, piece);
        fuzz::require(send(connection().ends[0], part.data(), part.size(), 0) == static_cast<ssize_t>(part.size()) &&
                          reader.receive(connection().ends[1], false) == MESSAGE_READER::STATE::open,
                      "a piece arrives");
        try {
            while (std::optional<MESSAGE> message = reader.next())
                messages.push_back(std::move(*message));
        } catch (std::runtime_error const&) {
            is_sound = false;
        }
    }
    return messages;
}

std::string as_sent(MESSAGE const& message) {
    fuzz::require(send_message(connection().ends[0], message), "a message that was read can be sent");
    return received();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, std::size_t size) {
    if (size < 1)
        return 0;
    std::string_view const sent(reinterpret_cast<char const*>(bytes) + 1, size - 1);
    bool is_sound = true;
    bool is_sound_in_pieces = true;
    std::vector<MESSAGE> const messages = messages_in(sent, size, is_sound);
    std::size_t const count = messages_in(sent, bytes[0] % 64 + 1u, is_sound_in_pieces).size();
    fuzz::require(count == messages.size() && is_sound == is_sound_in_pieces, "pieces make no difference");
    for (MESSAGE const& message : messages) {
        if (auto const* const result = std::get_if<RESULT_MESSAGE>(&message))
            fuzz::require(result->result.status <= ACTION_RESULT::STATUS::interrupted, "a result is one of three");
        std::string const once = as_sent(message);
        std::vector<MESSAGE> const again = messages_in(once, once.size(), is_sound);
        fuzz::require(is_sound && again.size() == 1 && again[0].index() == message.index() && as_sent(again[0]) == once,
                      "a message that was read arrives the same again");
    }
    return 0;
}
