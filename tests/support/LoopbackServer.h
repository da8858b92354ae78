#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <functional>
#include <mutex>
#include <thread>

namespace cantorel::test {

// A web server on a port of 127.0.0.1 that answers what a test wants, whole, broken, slow or without end. One
// connection after the other, on a thread of its own.
class LoopbackServer {
public:
    struct Reply {
        enum class Then { Close, Hold, Repeat }; // Hold and Repeat last until the other side leaves
        QByteArray bytes;                        // as they go over the wire
        Then then = Then::Close;

        static Reply page(const QByteArray &body, const QByteArray &status = "200 OK");
        static Reply redirect(const QString &url, const QByteArray &status = "302 Found");
    };
    // Given the whole request, head and body.
    using Handler = std::function<Reply(const QByteArray &request)>;

    explicit LoopbackServer(Handler handler);
    ~LoopbackServer();
    LoopbackServer(const LoopbackServer &) = delete;
    LoopbackServer &operator=(const LoopbackServer &) = delete;

    QString url(const QString &path = {}) const;
    QList<QByteArray> requests() const;

private:
    void serve();
    void answer(int connection);
    bool wait(int descriptor, short events) const; // false when the server ends

    const Handler mHandler;
    int mListening = -1;
    int mEnd = -1; // readable once the server ends
    int mPort = 0;
    mutable std::mutex mMutex; // guards the requests
    QList<QByteArray> mRequests;
    std::thread mThread;
};

} // namespace cantorel::test
