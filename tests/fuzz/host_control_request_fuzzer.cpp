// SPDX-License-Identifier: MIT
// Requests in any number of pieces, through the endpoint: the first piece decides, every request is
// answered once, in full, and only an accepted one calls the handler.
#include "fakes/fake_world.h"
#include "fuzz/fuzz_input.h"
#include "fuzz/fuzz_target.h"
#include "fuzz/plain_text.h"
#include "hostcontrol/host_control_server.h"

namespace orvanta::fuzz {
namespace {

constexpr std::size_t kLongestRequest = 16384;

/// A connection whose request arrives in pieces.
class ConnectionInPieces : public TcpConnection {
public:
    explicit ConnectionInPieces(std::vector<QByteArray> pieces) : m_pieces(std::move(pieces)) {}

    void receive(std::size_t maximum, std::function<void(QByteArray)> onReceived) override {
        require(sent.isEmpty() && received == 0, "there is one receive, before the reply");
        require(maximum == kLongestRequest, "a receive is as long as a request may be");
        ++received;
        onReceived(m_pieces.empty() ? QByteArray()
                                    : m_pieces[0].left(static_cast<qsizetype>(maximum)));
    }
    void send(QByteArray bytes, std::function<void()> onProcessed) override {
        require(sent.isEmpty() && cancelled == 0, "the reply is sent at once and in one piece");
        sent = bytes;
        onProcessed();
    }
    void cancel() override { ++cancelled; }

    int received = 0;
    QByteArray sent;
    int cancelled = 0;

private:
    std::vector<QByteArray> m_pieces;
};

/// The endpoint, started once; it keeps nothing of a request.
struct Endpoint {
    Endpoint() {
        server->start([this] { ++restarts; });
    }

    fakes::FakeWorld world;
    std::shared_ptr<HostControlServer> server = std::make_shared<HostControlServer>(world.platform);
    int restarts = 0;
};

bool isRestart(const QByteArray& piece) {
    const std::string_view bytes(piece.constData(),
                                 std::min(static_cast<std::size_t>(piece.size()), kLongestRequest));
    return bytes.substr(0, 14) == "POST /restart " && isUtf8(bytes);
}

const QByteArray kAcceptance = "HTTP/1.1 202 Accepted\r\nContent-Type: application/json\r\n"
                               "Content-Length: 17\r\nConnection: close\r\n\r\n"
                               "{\"accepted\":true}";
const QByteArray kRejection = "HTTP/1.1 404 Not Found\r\nContent-Type: application/json\r\n"
                              "Content-Length: 18\r\nConnection: close\r\n\r\n"
                              "{\"accepted\":false}";

void tryRequest(const std::vector<QByteArray>& pieces) {
    static Endpoint endpoint;
    endpoint.restarts = 0;
    const auto connection = std::make_shared<ConnectionInPieces>(pieces);
    endpoint.world.serialQueues.listeners.back()->onConnection(connection);
    const bool isAccepted = !pieces.empty() && isRestart(pieces[0]);
    require(connection->received == 1, "every connection is read once");
    require(connection->sent == (isAccepted ? kAcceptance : kRejection),
            "the first piece decides over the reply");
    require(connection->cancelled == 1, "every connection is closed once");
    require(endpoint.restarts == 0, "the handler is not called on the queue of the connection");
    endpoint.world.queue.runUntilIdle();
    require(endpoint.restarts == (isAccepted ? 1 : 0), "an accepted request restarts once");
    require(connection.use_count() == 1, "nobody keeps a connection that is done");
}

} // namespace

void tryInput(const QByteArray& input) {
    const FuzzInput parts(input);
    const QByteArray request = expanded(parts.bytes, 4090);
    const qsizetype at = parts.choice % (request.size() + 1);
    tryRequest({request});
    tryRequest({request.left(at), request.mid(at)});
    tryRequest(piecesOf(request.left(256), parts.choice, 32));
}

} // namespace orvanta::fuzz
