#include "media/TagServer.h"

#include <QFile>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslServer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <QUrl>
#include <QUrlQuery>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>

namespace halvo::media {

namespace {

constexpr std::size_t kTooLarge = 10'000'000; ///< bytes
constexpr std::chrono::milliseconds kDrip{100};
const QByteArray kHeaderEnd = QByteArrayLiteral("\r\n\r\n");

std::string response(int status, const std::string& body) {
    return "HTTP/1.1 " + std::to_string(status) +
           " Status\r\nContent-Length: " + std::to_string(body.size()) +
           "\r\nConnection: close\r\n\r\n" + body;
}

void send(QTcpSocket& socket, const std::string& bytes) {
    socket.write(bytes.data(), static_cast<qint64>(bytes.size()));
    socket.disconnectFromHost(); // once all is written
}

void drip(QTcpSocket& socket) {
    socket.write("HTTP/1.1 200 OK\r\nContent-Length: 100000\r\n\r\n");
    auto* timer = new QTimer(&socket);
    QObject::connect(timer, &QTimer::timeout, &socket, [&socket] { socket.write("x"); });
    timer->start(kDrip);
}

std::string headerField(const QByteArray& head, const QByteArray& name) {
    for (const auto& line : head.split('\n')) {
        if (line.toLower().startsWith(name + ':')) {
            return line.mid(name.size() + 1).trimmed().toStdString();
        }
    }
    return {};
}

std::string artistIn(const std::string& target) {
    const QUrlQuery query(QUrl::fromEncoded(QByteArray::fromStdString(target)));
    return query.queryItemValue(QStringLiteral("artist"), QUrl::FullyDecoded).toStdString();
}

std::unique_ptr<QTcpServer> makeServer(const TagServer::Identity& identity) {
    if (identity.certificateFile.empty()) return std::make_unique<QTcpServer>();
    QFile key(QString::fromStdString(identity.keyFile));
    if (!key.open(QIODevice::ReadOnly)) return std::make_unique<QTcpServer>();
    auto configuration = QSslConfiguration::defaultConfiguration();
    configuration.setLocalCertificateChain(
        QSslCertificate::fromPath(QString::fromStdString(identity.certificateFile)));
    configuration.setPrivateKey(QSslKey(key.readAll(), QSsl::Rsa));
    auto server = std::make_unique<QSslServer>();
    server->setSslConfiguration(configuration);
    return server;
}

} // namespace

TagServer::TagServer(const Identity& identity)
    : server_(makeServer(identity).release()), isSecure_(!identity.certificateFile.empty()) {
    if (server_->listen(QHostAddress::LocalHost)) port_ = server_->serverPort();
    QObject::connect(server_, &QTcpServer::pendingConnectionAvailable, server_, [this] {
        while (auto* socket = server_->nextPendingConnection()) {
            QObject::connect(socket, &QTcpSocket::readyRead, socket,
                             [this, socket] { take(*socket); });
            QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        }
    });
    server_->moveToThread(&thread_);
    QObject::connect(&thread_, &QThread::finished, server_, &QObject::deleteLater);
    thread_.start();
}

TagServer::~TagServer() {
    thread_.quit();
    (void)thread_.wait(); // without a limit it cannot fail
}

std::string TagServer::address() const {
    if (port_ == 0) return {};
    return (isSecure_ ? "https://127.0.0.1:" : "http://127.0.0.1:") + std::to_string(port_);
}

void TagServer::setBehaviour(Behaviour behaviour) {
    const std::lock_guard lock(mutex_);
    behaviour_ = behaviour;
}

void TagServer::setTags(const std::string& artist, Tags tags) {
    const std::lock_guard lock(mutex_);
    tags_[artist] = std::move(tags);
}

void TagServer::setContent(const std::string& path, std::string bytes) {
    const std::lock_guard lock(mutex_);
    contents_[path] = std::move(bytes);
}

std::vector<TagServer::Request> TagServer::requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
}

void TagServer::take(QTcpSocket& socket) {
    const auto head = socket.peek(1 << 16);
    if (!head.contains(kHeaderEnd)) return;
    socket.readAll();
    const auto words = head.left(head.indexOf('\r')).split(' ');
    const auto target = words.value(1).toStdString();
    const std::lock_guard lock(mutex_);
    requests_.push_back({target, headerField(head, "user-agent")});
    respond(socket, target);
}

std::string TagServer::answerFor(const std::string& target) const {
    if (behaviour_ == Behaviour::errorInside) {
        return R"({"error":6,"message":"The artist you supplied could not be found"})";
    }
    auto list = nlohmann::json::array();
    const auto found = tags_.find(artistIn(target));
    for (const auto& [name, count] : found != tags_.end() ? found->second : Tags()) {
        nlohmann::json entry{{"name", name}, {"count", count}};
        if (behaviour_ == Behaviour::countsAsText) entry["count"] = std::to_string(count);
        list.push_back(std::move(entry));
    }
    return nlohmann::json{{"toptags", {{"tag", std::move(list)}}}}.dump();
}

void TagServer::respond(QTcpSocket& socket, const std::string& target) const {
    const auto content = contents_.find(target);
    if (content != contents_.end()) return send(socket, response(200, content->second));
    switch (behaviour_) {
    case Behaviour::hangs:
        return;
    case Behaviour::drips:
        return drip(socket);
    case Behaviour::serverError:
        return send(socket, response(500, "{}"));
    case Behaviour::tooLarge:
        return send(socket, response(200, std::string(kTooLarge, ' ')));
    case Behaviour::page:
        return send(socket, response(200, "<!doctype html><p>Maintenance"));
    default:
        return send(socket, response(200, answerFor(target)));
    }
}

} // namespace halvo::media
