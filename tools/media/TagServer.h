#pragma once

#include <QString>
#include <QThread>

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

class QTcpServer;
class QTcpSocket;

namespace halvo::media {

/// An HTTP server on the loopback interface that answers as the tag service would, or fails as it
/// is told to. It serves on a thread of its own. Any thread; needs an application object.
class TagServer {
  public:
    using Tags = std::vector<std::pair<std::string, int>>;

    enum class Behaviour {
        answers,
        countsAsText,
        errorInside, ///< status 200, and an error in the answer
        page,        ///< status 200, and a page of HTML
        serverError,
        tooLarge, ///< 10 MB
        drips,    ///< a byte every 100 ms, without end
        hangs,    ///< reads the request and never answers
    };

    /// Files with a certificate and its key, for HTTPS.
    struct Identity {
        std::string certificateFile;
        std::string keyFile;
    };

    TagServer() : TagServer(Identity()) {}
    explicit TagServer(const Identity& identity);
    ~TagServer();
    TagServer(const TagServer&) = delete;
    TagServer& operator=(const TagServer&) = delete;

    /// "http://127.0.0.1:4711", or with https; empty when it cannot listen.
    std::string address() const;
    void setBehaviour(Behaviour behaviour);
    /// The answer for an artist; others have no tags.
    void setTags(const std::string& artist, Tags tags);
    /// The content at another path, such as a cover.
    void setContent(const std::string& path, std::string bytes);

    struct Request {
        std::string target; ///< path and query, as received
        std::string userAgent;
    };
    std::vector<Request> requests() const;

  private:
    void take(QTcpSocket& socket);
    std::string answerFor(const std::string& target) const;
    void respond(QTcpSocket& socket, const std::string& target) const;

    mutable std::mutex mutex_; ///< guards the members down to requests_
    Behaviour behaviour_ = Behaviour::answers;
    std::map<std::string, Tags> tags_;
    std::map<std::string, std::string> contents_;
    std::vector<Request> requests_;

    QThread thread_;
    QTcpServer* server_ = nullptr; ///< belongs to the thread, which deletes it
    std::uint16_t port_ = 0;
    bool isSecure_;
};

} // namespace halvo::media
