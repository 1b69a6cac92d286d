// Messages arrive as they were sent, whatever pieces the socket makes of them.
#include "host/tool/worker_messages.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

#include <sys/socket.h>
#include <unistd.h>

namespace {

using namespace tool;

struct CONNECTION {
    CONNECTION() { EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0); }
    ~CONNECTION() {
        close(ends[0]);
        close(ends[1]);
    }
    int ends[2];
};

RESULT_MESSAGE full_result() {
    RESULT_MESSAGE message;
    message.result.status = ACTION_RESULT::STATUS::interrupted;
    message.result.made_no_file = true;
    message.result.lines = QStringList{QStringLiteral("ä"), QString(200000, u'x'), QString()};
    message.result.diagnosis = QStringLiteral("why");
    message.result.milliseconds = 1LL << 40;
    message.result.peak_bytes = 1ULL << 41;
    message.changes = {{QStringLiteral("id"), {{"n", "f", "p"}}, {{"n", "m", "k", "c"}}}, {{}, {{"n", {}, "p"}}, {}}};
    return message;
}

TEST(worker_messages, arrive_as_they_were_sent) {
    CONNECTION const connection;
    RESULT_MESSAGE const sent = full_result();
    // More than the socket holds at once.
    std::thread sender([&] {
        EXPECT_TRUE(send_message(connection.ends[0], LINE_MESSAGE{QStringLiteral("line")}));
        EXPECT_TRUE(send_message(connection.ends[0], sent));
        EXPECT_TRUE(send_message(connection.ends[0], RUN_MESSAGE{7, 3, sent.changes}));
    });
    MESSAGE_READER reader;
    std::vector<MESSAGE> got;
    while (got.size() < 3) {
        ASSERT_EQ(reader.receive(connection.ends[1], true), MESSAGE_READER::STATE::open);
        while (auto message = reader.next())
            got.push_back(std::move(*message));
    }
    sender.join();
    EXPECT_EQ(std::get<LINE_MESSAGE>(got[0]).text, QStringLiteral("line"));
    auto const& result = std::get<RESULT_MESSAGE>(got[1]);
    EXPECT_EQ(result.result.status, sent.result.status);
    EXPECT_TRUE(result.result.made_no_file);
    EXPECT_EQ(result.result.lines, sent.result.lines);
    EXPECT_EQ(result.result.diagnosis, sent.result.diagnosis);
    EXPECT_EQ(result.result.milliseconds, sent.result.milliseconds);
    EXPECT_EQ(result.result.peak_bytes, sent.result.peak_bytes);
    auto const& order = std::get<RUN_MESSAGE>(got[2]);
    EXPECT_EQ(order.action, 7U);
    EXPECT_EQ(order.threads, 3);
    ASSERT_EQ(order.changes.size(), 2);
    EXPECT_EQ(order.changes[0].dependencies[0].condition, QStringLiteral("c"));
    EXPECT_TRUE(order.changes[1].id.isEmpty());
    EXPECT_EQ(order.changes[1].fragments[0].package, QStringLiteral("p"));
}

TEST(worker_messages, damage_and_ends_are_noticed) {
    CONNECTION const connection;
    QByteArray const cases[] = {// Another version, no such message, and a text without its length.
                                QByteArray("\0\0\0\2\x02\0", 6), QByteArray("\0\0\0\2\1\x63", 6),
                                QByteArray("\0\0\0\3\1\2\0", 7),
                                // Bytes left over, a length that nothing has, and two thousand million changes.
                                QByteArray("\0\0\0\3\1\1\0", 7), QByteArray("\xff\xff\xff\xff", 4),
                                QByteArray("\0\0\0\x12\1\0\0\0\0\0\0\0\0\1\0\0\0\1\x7f\xff\xff\xff", 22)};
    for (QByteArray const& bytes : cases) {
        ASSERT_EQ(write(connection.ends[0], bytes.constData(), static_cast<std::size_t>(bytes.size())), bytes.size());
        MESSAGE_READER reader;
        reader.receive(connection.ends[1], true);
        EXPECT_THROW(reader.next(), std::runtime_error);
    }
    shutdown(connection.ends[0], SHUT_RDWR);
    MESSAGE_READER reader;
    EXPECT_EQ(reader.receive(connection.ends[1], false), MESSAGE_READER::STATE::closed);
    EXPECT_FALSE(send_message(connection.ends[0], STOP_MESSAGE()));
}

}  // namespace
