#pragma once

#include "platform/HTTPSession.h"

#include <QObject>
#include <QThread>

#include <string>

namespace halvo {

class HTTPWorker;

/// Requests over the toolkit's network library, on a thread of their own: loading that library's
/// plugins and the system's certificates takes longer than a frame. Nothing is loaded and no thread
/// exists before the first request. A request that is under way when this goes never completes.
class QtHTTPSession final : public HTTPSession {
  public:
    /// Addresses that begin with `origin` are asked at `replacement` instead; neither, if empty.
    explicit QtHTTPSession(std::string origin = {}, std::string replacement = {});
    ~QtHTTPSession() override;

    void get(const HTTPRequest& request, Completion completion) override;

  private:
    std::string origin_;
    std::string replacement_;
    QObject context_; ///< where completions run; they end with it
    QThread thread_;
    HTTPWorker* worker_ = nullptr; ///< lives on the thread and ends with it
};

} // namespace halvo
