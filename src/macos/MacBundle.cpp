#include "macos/MacBundle.h"

#include "macos/CoreFoundation.h"

namespace halvo::MacBundle {

std::optional<std::filesystem::path> resourceFolder() {
    CFBundleRef bundle = CFBundleGetMainBundle();
    if (!bundle) return std::nullopt;
    return pathOf(CFHandle<CFURLRef>(CFBundleCopyResourcesDirectoryURL(bundle)).get());
}

std::optional<std::filesystem::path> resource(const std::string& name,
                                              const std::string& extension) {
    CFBundleRef bundle = CFBundleGetMainBundle();
    const auto named = makeCFString(name);
    const auto ending = makeCFString(extension);
    if (!bundle || !named || !ending) return std::nullopt;
    const CFHandle<CFURLRef> url(
        CFBundleCopyResourceURL(bundle, named.get(), ending.get(), /*subDirName*/ nullptr));
    return pathOf(url.get());
}

} // namespace halvo::MacBundle
