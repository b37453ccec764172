#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace halvo::session {

/// An observer of a sound server: its nodes, their levels and the default output. Updated on a
/// thread of its own. Any thread.
class ServerView {
  public:
    struct Node {
        unsigned id = 0;
        std::string name;
        bool hasPorts = false;
        std::vector<float> volumes; ///< linear amplitude per channel; empty: not known yet
        bool muted = false;
    };

    /// Null when no server listens at the socket.
    static std::unique_ptr<ServerView> connect(const std::string& socket);
    ~ServerView();

    /// Whether the session manager has published its defaults.
    bool hasManager() const;
    /// False once the server is gone.
    bool isConnected() const;

    std::optional<Node> node(const std::string& name) const;
    /// In the server's order.
    std::vector<Node> nodes() const;
    /// The default output in effect; empty when there is none.
    std::string defaultSink() const;
    /// The configured default output; nothing when the key is absent.
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
