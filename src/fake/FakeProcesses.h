#pragma once

#include "fake/CallLog.h"
#include "platform/BackgroundQueue.h"
#include "platform/ChildProcess.h"
#include "platform/HTTPSession.h"
#include "platform/Image.h"
#include "platform/MediaHelper.h"
#include "platform/ScriptRunner.h"

#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace halvo {

/// Background work that runs on the test's thread when the test says so.
class FakeBackgroundQueue final : public BackgroundQueue {
  public:
    void async(std::function<void()> work) override { queued_.push_back(std::move(work)); }
    /// Runs all work, including work queued meanwhile.
    void flush();

  private:
    std::deque<std::function<void()>> queued_;
};

/// Requests that wait for the test's reply, oldest first.
class FakeHTTPSession final : public HTTPSession {
  public:
    void get(const HTTPRequest& request, Completion completion) override;
    void answer(std::optional<HTTPResponse> response);

    std::vector<HTTPRequest> requests; ///< all that were ever made

  private:
    std::deque<Completion> waiting_;
};

/// Helpers controlled by the test.
class FakeChildProcessLauncher final : public ChildProcessLauncher {
  public:
    explicit FakeChildProcessLauncher(CallLog& log) : log_(log) {}

    std::expected<std::unique_ptr<ChildProcess>, std::string>
    launch(const Command& command, ChildProcessHandlers handlers) override;
    std::expected<int, std::string> run(const Command& command) override;

    /// The latest helper that was launched writes, closes its output, or ends.
    void say(const std::string& bytes);
    void closeOutput();
    void exit(int status);
    /// The one before that ends.
    void exitEarlier(int status);
    bool isRunning() const { return isRunning_; }

    bool launchFails = false;

  private:
    class Process;

    CallLog& log_;
    std::shared_ptr<ChildProcessHandlers> handlers_;
    std::shared_ptr<ChildProcessHandlers> earlierHandlers_;
    bool isRunning_ = false;
};

/// Scripts with prepared answers; one without gives nothing.
class FakeScriptRunner final : public ScriptRunner {
  public:
    std::expected<std::optional<std::string>, ScriptError> run(const std::string& source) override;

    std::map<std::string, std::string> answers; ///< by source
    std::map<std::string, ScriptError> errors;  ///< by source
    std::vector<std::string> sources;           ///< all that were run
};

/// Treats bytes that begin with "image" as a picture of one pixel.
class FakeImageReader final : public ImageReader {
  public:
    std::optional<Image> read(const std::string& bytes, int longestSide) override;
};

/// A helper of two files in a folder that the test fills.
class FakeMediaHelper final : public MediaHelper {
  public:
    std::optional<std::string> resourceFolder() const override { return folder; }
    std::string libraryName() const override { return "media_helper.dylib"; }
    std::string scriptName() const override { return "run.pl"; }
    Command command(const std::string& script, const std::string& library,
                    const std::string& word) const override {
        return {"/usr/bin/perl", {script, library, word}};
    }

    std::optional<std::string> folder;
};

} // namespace halvo
