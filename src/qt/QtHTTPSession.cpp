#include "qt/QtHTTPSession.h"

#include "qt/HTTPWorker.h"

#include <QPointer>

#include <utility>

namespace halvo {

QtHTTPSession::QtHTTPSession(std::string origin, std::string replacement)
    : origin_(std::move(origin)), replacement_(std::move(replacement)) {}

QtHTTPSession::~QtHTTPSession() {
    thread_.quit();
    (void)thread_.wait(); // without a limit it cannot fail
}

void QtHTTPSession::get(const HTTPRequest& request, Completion completion) {
    if (worker_ == nullptr) {
        worker_ = new HTTPWorker;
        worker_->moveToThread(&thread_);
        QObject::connect(&thread_, &QThread::finished, worker_, &QObject::deleteLater);
        thread_.setObjectName(QStringLiteral("network"));
        thread_.start();
    }
    auto deliver = [this, completion = std::move(completion)](HTTPWorker::Answer answer) {
        QMetaObject::invokeMethod(
            &context_,
            [completion, answer = std::move(answer)]() mutable { completion(std::move(answer)); },
            Qt::QueuedConnection);
    };
    HTTPRequest sent = request;
    if (!replacement_.empty() && sent.url.starts_with(origin_)) {
        sent.url.replace(0, origin_.size(), replacement_);
    }
    QMetaObject::invokeMethod(
        worker_,
        [worker = worker_, request = std::move(sent), deliver = std::move(deliver)]() mutable {
            worker->start(request, std::move(deliver));
        },
        Qt::QueuedConnection);
}

} // namespace halvo
