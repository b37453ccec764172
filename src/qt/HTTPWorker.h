#pragma once

#include "platform/HTTPSession.h"

#include <QNetworkAccessManager>

#include <functional>
#include <optional>

namespace halvo {

/// The network thread's part of QtHTTPSession: everything but the constructor runs there.
class HTTPWorker final : public QObject {
  public:
    using Answer = std::optional<HTTPResponse>;

    /// `deliver` is called once, on the network thread, unless this goes first.
    void start(const HTTPRequest& request, std::function<void(Answer)> deliver);

  private:
    QNetworkAccessManager& manager();

    QNetworkAccessManager* manager_ = nullptr; ///< made on the network thread
};

} // namespace halvo
