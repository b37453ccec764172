#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace halvo::session {

/// A sound server seen from outside: its nodes and their levels, its default output. Kept up to
/// date on a thread of its own. Any thread.
class ServerView {
  public:
    struct Node {
        unsigned id = 0;
        std::string name;
        bool hasPorts = false;
        std::vector<float> volumes; ///< linear amplitude per channel; empty: not known yet
        bool muted = false;
    };

    /// Null when nobody listens at the socket.
    static std::unique_ptr<ServerView> connect(const std::string& socket);
    ~ServerView();

    /// Whether the session manager has published its defaults.
    bool hasManager() const;
    /// False once the server went away.
    bool isConnected() const;

    std::optional<Node> node(const std::string& name) const;
    /// In the server's order.
    std::vector<Node> nodes() const;
    /// The default output in effect; empty when there is none.
    std::string defaultSink() const;
    /// The default output that somebody asked for; nothing when the key is absent.
    std::optional<std::string> configuredDefault() const;

    // Requests; they take effect later. False when there is no such node or session manager.
    bool setDefault(const std::string& name);
    bool setVolume(const std::string& name, const std::vector<float>& volumes);
    bool setMuted(const std::string& name, bool muted);
    bool createNode(const std::vector<std::pair<std::string, std::string>>& properties);
    bool destroyNode(const std::string& name);

  private:
    struct Connection;
    explicit ServerView(std::unique_ptr<Connection> connection);
    std::unique_ptr<Connection> connection_;
};

} // namespace halvo::session
