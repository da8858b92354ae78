#include "tests/support/LoopbackServer.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <stdexcept>

namespace cantorel::test {

namespace {

// How long the request is, head and body; 0 while that is not known yet.
qsizetype lengthOf(const QByteArray &request) {
    const qsizetype head = request.indexOf("\r\n\r\n");
    if (head < 0)
        return 0;
    qsizetype body = 0;
    for (const QByteArray &line : request.first(head).split('\n'))
        if (line.toLower().startsWith("content-length:"))
            body = line.mid(15).trimmed().toLongLong();
    return head + 4 + body;
}

} // namespace

LoopbackServer::Reply LoopbackServer::Reply::page(const QByteArray &body, const QByteArray &status) {
    return {"HTTP/1.1 " + status + "\r\nConnection: close\r\nContent-Length: " + QByteArray::number(body.size())
            + "\r\n\r\n" + body};
}

LoopbackServer::Reply LoopbackServer::Reply::redirect(const QString &url, const QByteArray &status) {
    return {"HTTP/1.1 " + status + "\r\nConnection: close\r\nContent-Length: 0\r\nLocation: " + url.toUtf8()
            + "\r\n\r\n"};
}

LoopbackServer::LoopbackServer(Handler handler) : mHandler(std::move(handler)) {
    mListening = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    mEnd = eventfd(0, EFD_CLOEXEC);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (bind(mListening, reinterpret_cast<sockaddr *>(&address), size) != 0 || listen(mListening, 8) != 0
        || getsockname(mListening, reinterpret_cast<sockaddr *>(&address), &size) != 0)
        throw std::runtime_error("no port for the loopback server");
    mPort = ntohs(address.sin_port);
    qputenv("no_proxy", "127.0.0.1");
    mThread = std::thread([this] { serve(); });
}

LoopbackServer::~LoopbackServer() {
    (void)eventfd_write(mEnd, 1);
    mThread.join();
    close(mListening);
    close(mEnd);
}

QString LoopbackServer::url(const QString &path) const {
    return QStringLiteral("http://127.0.0.1:%1%2").arg(mPort).arg(path);
}

QList<QByteArray> LoopbackServer::requests() const {
    const std::lock_guard lock(mMutex);
    return mRequests;
}

bool LoopbackServer::wait(int descriptor, short events) const {
    std::array<pollfd, 2> watched{{{mEnd, POLLIN, 0}, {descriptor, events, 0}}};
    return poll(watched.data(), watched.size(), -1) > 0 && watched[0].revents == 0;
}

void LoopbackServer::serve() {
    while (wait(mListening, POLLIN)) {
        const int connection = accept4(mListening, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection < 0)
            continue;
        answer(connection);
        close(connection);
    }
}

void LoopbackServer::answer(int connection) {
    std::array<char, 4096> buffer;
    QByteArray request;
    while (lengthOf(request) == 0 || request.size() < lengthOf(request)) {
        if (!wait(connection, POLLIN))
            return;
        const ssize_t count = recv(connection, buffer.data(), buffer.size(), 0);
        if (count <= 0)
            return;
        request.append(buffer.data(), count);
    }
    {
        const std::lock_guard lock(mMutex);
        mRequests.append(request);
    }
    const Reply reply = mHandler(request);
    do {
        for (qsizetype sent = 0; sent < reply.bytes.size();) {
            if (!wait(connection, POLLOUT))
                return;
            const ssize_t count = send(connection, reply.bytes.constData() + sent,
                                       static_cast<size_t>(reply.bytes.size() - sent), MSG_NOSIGNAL | MSG_DONTWAIT);
            if (count < 0)
                return;
            sent += count;
        }
    } while (reply.then == Reply::Then::Repeat);
    if (reply.then == Reply::Then::Hold)
        while (wait(connection, POLLIN) && recv(connection, buffer.data(), buffer.size(), 0) > 0) {
        }
}

} // namespace cantorel::test
