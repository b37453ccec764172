#pragma once

#include <pipewire/extensions/metadata.h>
#include <pipewire/pipewire.h>

#include <memory>

// libpipewire's calls are macros with C casts.
#pragma GCC diagnostic ignored "-Wold-style-cast"
#ifdef __clang__
#pragma clang diagnostic ignored "-Wgnu-statement-expression-from-macro-expansion"
#endif

namespace halvo {

/// A listener hook; removed when destroyed.
class PipeWireHook {
  public:
    PipeWireHook() = default;
    ~PipeWireHook() { remove(); }
    PipeWireHook(const PipeWireHook&) = delete;
    PipeWireHook& operator=(const PipeWireHook&) = delete;

    spa_hook* get() { return &hook_; }
    void remove() {
        spa_hook_remove(&hook_);
        hook_ = {};
    }
    /// For a hook that its list has removed.
    void forget() { hook_ = {}; }

  private:
    spa_hook hook_{};
};

struct PipeWireProxyDeleter {
    template <typename Object> void operator()(Object* object) const {
        pw_proxy_destroy(reinterpret_cast<pw_proxy*>(object));
    }
};
/// A proxy. Declare it before its hooks, so that they are removed first.
template <typename Object> using PipeWireProxy = std::unique_ptr<Object, PipeWireProxyDeleter>;

struct PipeWirePropertiesDeleter {
    void operator()(pw_properties* properties) const { pw_properties_free(properties); }
};
using PipeWireProperties = std::unique_ptr<pw_properties, PipeWirePropertiesDeleter>;

} // namespace halvo
