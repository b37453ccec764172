// halvo-cover-fetch URL: writes the content to standard output, or nothing and fails.

#include "Cover.h"
#include "posix/FileDescriptor.h"

#include <csignal>
#include <cstdlib>
#include <curl/curl.h>
#include <memory>
#include <poll.h>
#include <string>
#include <string_view>
#include <sys/prctl.h>
#include <unistd.h>

namespace {

using halvo::helper::kLargestCover;

constexpr long kLongestTime = 5000; ///< milliseconds, from the first look-up to the last byte
constexpr long kMostRedirects = 5;

/// Ends this process with its parent. The parent has a single thread, so the signal comes when that
/// process ends.
bool endsWithParent() {
    (void)::prctl(PR_SET_PDEATHSIG, SIGKILL);
    pollfd output{STDOUT_FILENO, 0, 0};
    return ::poll(&output, 1, 0) == 0; // or it is gone already
}

std::size_t take(char* data, std::size_t /*one*/, std::size_t count, void* into) {
    auto& body = *static_cast<std::string*>(into);
    if (body.size() + count > kLargestCover) return 0;
    body.append(data, count);
    return count;
}

bool isThisMachine(CURLU* address) {
    char* text = nullptr;
    if (curl_url_get(address, CURLUPART_HOST, &text, 0) != CURLUE_OK) return false;
    const std::string_view host = text;
    const bool isLocal = host == "localhost" || host.starts_with("127.") || host == "[::1]";
    curl_free(text);
    return isLocal;
}

bool load(const char* url, std::string& body) {
    const std::unique_ptr<CURL, void (*)(CURL*)> transfer(curl_easy_init(), curl_easy_cleanup);
    const std::unique_ptr<CURLU, void (*)(CURLU*)> address(curl_url(), curl_url_cleanup);
    if (!transfer || !address) return false;
    if (curl_url_set(address.get(), CURLUPART_URL, url, 0) != CURLUE_OK) return false;
    CURL* handle = transfer.get();
    const bool isSecure = std::string_view(url).starts_with("https:");
    curl_easy_setopt(handle, CURLOPT_CURLU, address.get());
    curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(handle, CURLOPT_REDIR_PROTOCOLS_STR, isSecure ? "https" : "http,https");
    curl_easy_setopt(handle, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(handle, CURLOPT_MAXREDIRS, kMostRedirects);
    curl_easy_setopt(handle, CURLOPT_TIMEOUT_MS, kLongestTime);
    curl_easy_setopt(handle, CURLOPT_FAILONERROR, 1L);
    curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, take);
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, &body);
    if (isThisMachine(address.get())) curl_easy_setopt(handle, CURLOPT_NOPROXY, "*");
    return curl_easy_perform(handle) == CURLE_OK;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2 || !endsWithParent()) return EXIT_FAILURE;
    std::string body;
    const bool isComplete = load(argv[1], body) && halvo::writeAll(STDOUT_FILENO, body);
    return isComplete ? EXIT_SUCCESS : EXIT_FAILURE;
}
