#include "qt/HTTPWorker.h"

#include <QHostAddress>
#include <QNetworkProxyFactory>
#include <QNetworkReply>
#include <QTimer>

#include <memory>
#include <utility>

namespace halvo {

namespace {

constexpr int kMostRedirects = 5;
constexpr qint64 kReadBuffer = 1 << 16; ///< bytes; the rest waits in the socket

/// The system's proxies, but never for this machine itself.
class OutsideProxies final : public QNetworkProxyFactory {
  public:
    QList<QNetworkProxy> queryProxy(const QNetworkProxyQuery& query) override {
        const QString host = query.peerHostName();
        if (host == QLatin1String("localhost") || QHostAddress(host).isLoopback()) {
            return {QNetworkProxy(QNetworkProxy::NoProxy)};
        }
        return systemProxyForQuery(query);
    }
};

/// One request and its response; owned by its reply.
class Exchange final : public QObject {
  public:
    Exchange(QNetworkReply& reply, const HTTPRequest& request,
             std::function<void(HTTPWorker::Answer)> deliver)
        : QObject(&reply), reply_(reply), maximumBytes_(request.maximumBytes),
          deliver_(std::move(deliver)) {
        reply.setReadBufferSize(kReadBuffer);
        connect(&reply, &QNetworkReply::readyRead, this, &Exchange::take);
        connect(&reply, &QNetworkReply::finished, this, &Exchange::finish);
        // Qt's own timeout restarts with every byte, so a slow drip would never end.
        QTimer::singleShot(request.timeout, Qt::PreciseTimer, this, [this] { fail(); });
    }

  private:
    void take() {
        const auto bytes = reply_.readAll();
        if (body_.size() + static_cast<std::size_t>(bytes.size()) > maximumBytes_) return fail();
        body_.append(bytes.constData(), static_cast<std::size_t>(bytes.size()));
    }

    void fail() {
        answer(std::nullopt);
        reply_.abort();
    }

    void finish() {
        if (deliver_) take();
        const auto status = reply_.attribute(QNetworkRequest::HttpStatusCodeAttribute);
        // A status such as 404 is a response, too; a network error is not.
        const bool complete = reply_.error() == QNetworkReply::NoError ||
                              reply_.error() > QNetworkReply::UnknownProxyError;
        if (complete && status.isValid() && reply_.error() != QNetworkReply::ProtocolFailure) {
            answer(HTTPResponse{status.toInt(), std::move(body_)});
        } else {
            answer(std::nullopt);
        }
        reply_.deleteLater();
    }

    void answer(HTTPWorker::Answer result) {
        if (const auto deliver = std::exchange(deliver_, nullptr)) deliver(std::move(result));
    }

    QNetworkReply& reply_;
    std::size_t maximumBytes_;
    std::function<void(HTTPWorker::Answer)> deliver_;
    std::string body_;
};

} // namespace

QNetworkAccessManager& HTTPWorker::manager() {
    if (manager_ == nullptr) {
        manager_ = new QNetworkAccessManager(this);
        manager_->setProxyFactory(new OutsideProxies);
    }
    return *manager_;
}

void HTTPWorker::start(const HTTPRequest& request, std::function<void(Answer)> deliver) {
    const QUrl url = QUrl::fromEncoded(QByteArray::fromStdString(request.url), QUrl::StrictMode);
    const bool isWeb =
        url.scheme() == QLatin1String("https") || url.scheme() == QLatin1String("http");
    if (!url.isValid() || !isWeb) return deliver(std::nullopt);
    QNetworkRequest question(url);
    // Never from https to http, and to nothing but these two.
    question.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                          QNetworkRequest::NoLessSafeRedirectPolicy);
    question.setMaximumRedirectsAllowed(kMostRedirects);
    question.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    question.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    if (!request.userAgent.empty()) {
        question.setHeader(QNetworkRequest::UserAgentHeader,
                           QString::fromStdString(request.userAgent));
    }
    new Exchange(*manager().get(question), request, std::move(deliver));
}

} // namespace halvo
