#pragma once

#include "platform/HTTPSession.h"

#include <QObject>
#include <QThread>

#include <string>

namespace halvo {

class HTTPWorker;

/// HTTP over Qt Network, on a thread of its own, because loading that library's plugins and the
/// system's certificates takes longer than a frame. Thread and library are loaded with the first
/// request. A request in flight when this is destroyed never completes.
class QtHTTPSession final : public HTTPSession {
  public:
    /// URLs that begin with `origin` go to `replacement` instead, unless that is empty.
    explicit QtHTTPSession(std::string origin = {}, std::string replacement = {});
    ~QtHTTPSession() override;

    void get(const HTTPRequest& request, Completion completion) override;

  private:
    std::string origin_;
    std::string replacement_;
    QObject context_; ///< completions run on its thread, and none after it
    QThread thread_;
    HTTPWorker* worker_ = nullptr; ///< lives on the thread; deleted when it finishes
};

} // namespace halvo
