// SPDX-License-Identifier: MIT
#include "integration/tcp_listener/serial_queue_test.h"

#include <ctime>
#include <sys/resource.h>

namespace orvanta {
namespace {

class SerialQueueBounds : public SerialQueueTest {};

TEST_F(SerialQueueBounds, TheLongestWaitingPeersGiveWay) {
    constexpr int kPeers = 300;
    constexpr int kMostOpen = 64;
    std::atomic<int> accepted = 0;
    const auto end = endingTheQueue();
    const auto port = listen([&accepted](const auto& connection) {
        answer(connection);
        ++accepted;
    });
    std::vector<std::unique_ptr<TcpClient>> idle;
    for (int i = 0; i < kPeers; ++i) {
        idle.push_back(std::make_unique<TcpClient>(port));
        ASSERT_EQ(idle.back()->connectError(), 0);
    }
    ASSERT_TRUE(waitUntil([&] { return accepted == kPeers; }));
    // Pipe and listener, the clients, and the connections that are left.
    EXPECT_EQ(descriptorCount(), m_descriptorsBefore + 3 + kPeers + kMostOpen);

    TcpClient asking(port);
    asking.send("x");
    EXPECT_EQ(asking.receiveToEnd().bytes, kReply);

    // One more went for the one that asked.
    for (int i = 0; i <= kPeers - kMostOpen; ++i) {
        const auto received = idle[static_cast<std::size_t>(i)]->receiveToEnd();
        EXPECT_EQ(received.bytes, kReply) << i;
        EXPECT_EQ(received.error, 0) << i;
    }
    for (int i = kPeers - kMostOpen + 1; i < kPeers; ++i) {
        TcpClient& client = *idle[static_cast<std::size_t>(i)];
        client.send("x");
        EXPECT_EQ(client.receiveToEnd().bytes, kReply) << i;
    }
}

TEST_F(SerialQueueBounds, APeerThatHasAskedInACrowdIsHeard) {
    constexpr int kPeers = 200;
    Event<bool> isBusy;
    Event<bool> mayGoOn;
    std::atomic<int> accepted = 0;
    std::atomic<int> heard = 0;
    const auto end = endingTheQueue();
    const auto port = listen([&](const auto& connection) {
        if (++accepted == 1) {
            isBusy.happen(true);
            mayGoOn.wait();
        }
        connection->receive(10, [&, connection](const QByteArray& bytes) {
            heard += bytes == "x";
            connection->send(kReply, [connection] { connection->cancel(); });
        });
    });
    // All of them are there, and have asked, before the queue looks at the second.
    std::vector<std::unique_ptr<TcpClient>> clients;
    for (int i = 0; i < kPeers; ++i) {
        clients.push_back(std::make_unique<TcpClient>(port));
        ASSERT_EQ(clients.back()->send("x"), 0);
    }
    isBusy.wait();
    mayGoOn.happen(true);
    for (const auto& client : clients) {
        EXPECT_EQ(client->receiveToEnd().bytes, kReply);
    }
    EXPECT_EQ(heard, kPeers);
}

TEST_F(SerialQueueBounds, APeerThatGivesWayIsHeardIfItHasJustSpoken) {
    constexpr int kMostOpen = 64;
    Event<bool> isFull;
    Event<bool> mayGoOn;
    Event<QByteArray> heard;
    int accepted = 0;
    const auto end = endingTheQueue();
    const auto port = listen([&](const auto& connection) {
        ++accepted;
        connection->receive(10, [&heard, isFirst = accepted == 1](const QByteArray& bytes) {
            if (isFirst) {
                heard.happen(bytes);
            }
        });
        if (accepted == kMostOpen) {
            isFull.happen(true);
            mayGoOn.wait();
        }
    });
    std::vector<std::unique_ptr<TcpClient>> clients;
    for (int i = 0; i < kMostOpen; ++i) {
        clients.push_back(std::make_unique<TcpClient>(port));
    }
    isFull.wait();
    // The queue finds these two at once.
    EXPECT_EQ(clients[0]->send("x"), 0);
    const TcpClient oneTooMany(port);
    mayGoOn.happen(true);
    EXPECT_EQ(heard.wait(), "x");
}

TEST_F(SerialQueueBounds, TheClosingGiveWayFirstAndTheBusyLast) {
    constexpr int kMostOpen = 64;
    std::shared_ptr<TcpConnection> busy;
    Event<QByteArray> longestWaiting;
    std::atomic<int> accepted = 0;
    const auto end = endingTheQueue();
    const auto port = listen([&](const auto& connection) {
        const int number = accepted + 1;
        if (number == 1) {
            busy = connection;
        } else if (number == 2) {
            connection->receive(10, [&](const QByteArray& bytes) { longestWaiting.happen(bytes); });
        } else if (number == kMostOpen) {
            connection->cancel();
        } else {
            connection->receive(10, [](const QByteArray&) {});
        }
        if (number == kMostOpen + 2) {
            busy->send(kReply, [] {});
        }
        accepted = number;
    });
    std::vector<std::unique_ptr<TcpClient>> clients;
    const auto connectUpTo = [&](int count) {
        while (static_cast<int>(clients.size()) < count) {
            clients.push_back(std::make_unique<TcpClient>(port));
        }
        return waitUntil([&] { return accepted == count; });
    };
    ASSERT_TRUE(connectUpTo(kMostOpen + 1));
    EXPECT_FALSE(longestWaiting.hasHappened());
    ASSERT_TRUE(connectUpTo(kMostOpen + 2));
    EXPECT_EQ(longestWaiting.wait(), QByteArray());
    EXPECT_EQ(clients[0]->receive(kReply.size()).bytes, kReply);
}

TEST_F(SerialQueueBounds, ConnectionsThatNobodyWaitsForGiveWayToo) {
    constexpr int kPeers = 100;
    std::vector<std::shared_ptr<TcpConnection>> kept;
    std::atomic<int> accepted = 0;
    const auto port = listen([&](const auto& connection) {
        kept.push_back(connection);
        ++accepted;
    });
    std::vector<std::unique_ptr<TcpClient>> clients;
    for (int i = 0; i < kPeers; ++i) {
        clients.push_back(std::make_unique<TcpClient>(port));
    }
    ASSERT_TRUE(waitUntil([&] { return accepted == kPeers; }));
    EXPECT_EQ(descriptorCount(), m_descriptorsBefore + 3 + kPeers + 64);
    EXPECT_EQ(clients[0]->receiveToEnd().error, 0);
    m_queue.reset();
}

/// Lets this process open nothing more while it lives.
class NoDescriptorLeft {
public:
    NoDescriptorLeft() {
        ::getrlimit(RLIMIT_NOFILE, &m_before);
        rlimit none = m_before;
        none.rlim_cur = static_cast<rlim_t>(*openDescriptors().rbegin() + 1);
        ::setrlimit(RLIMIT_NOFILE, &none);
        fillGaps();
    }
    ~NoDescriptorLeft() { ::setrlimit(RLIMIT_NOFILE, &m_before); }

private:
    void fillGaps() {
        while (true) {
            FileDescriptor copy(::dup(0));
            if (!copy.isOpen()) {
                return;
            }
            m_fillers.push_back(std::move(copy));
        }
    }

    rlimit m_before{};
    std::vector<FileDescriptor> m_fillers;
};

TEST_F(SerialQueueBounds, WithoutDescriptorsLeftItWaitsPatiently) {
    std::atomic<int> accepted = 0;
    const auto end = endingTheQueue();
    const auto port = listen([&accepted](const auto& connection) {
        ++accepted;
        answer(connection);
    });
    // All code of an exchange has run once: a sanitizer that meets a type for the first time needs
    // descriptors of its own.
    TcpClient first(port);
    first.send("x");
    ASSERT_EQ(first.receiveToEnd().bytes, kReply);
    // One for the client and none for the queue.
    FileDescriptor reserved(::dup(0));
    std::optional<NoDescriptorLeft> shortage(std::in_place);
    reserved.reset();
    TcpClient client(port);
    ASSERT_EQ(client.connectError(), 0);
    client.send("x");
    const std::clock_t before = std::clock();
    std::this_thread::sleep_for(std::chrono::milliseconds(700));
    EXPECT_LT(std::clock() - before, CLOCKS_PER_SEC / 10);
    EXPECT_EQ(accepted, 1);
    shortage.reset();
    EXPECT_EQ(client.receiveToEnd().bytes, kReply);
}

} // namespace
} // namespace orvanta
