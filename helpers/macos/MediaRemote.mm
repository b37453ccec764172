#include "helpers/macos/MediaRemote.h"

#include <CoreFoundation/CoreFoundation.h>
#include <Foundation/Foundation.h>

#include <cmath>
#include <dlfcn.h>

namespace halvo::helper {

namespace {

constexpr const char* kFramework =
    "/System/Library/PrivateFrameworks/MediaRemote.framework/MediaRemote";
constexpr std::int64_t kLongestAnswer = 2 * std::int64_t{NSEC_PER_SEC};
constexpr double kLongestTrack = 1e6; // seconds; what is more was no duration

template <typename Function> bool find(void* library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(::dlsym(library, name));
    return function != nullptr;
}

std::string textOf(NSDictionary* information, NSString* key) {
    id value = information[key];
    if (![value isKindOfClass:[NSString class]]) return {};
    const char* text = [value UTF8String];
    return text != nullptr ? text : std::string();
}

std::int64_t durationMicros(NSDictionary* information) {
    id value = information[@"kMRMediaRemoteNowPlayingInfoDuration"];
    if (![value isKindOfClass:[NSNumber class]]) return 0;
    const double seconds = [value doubleValue];
    return seconds > 0 && seconds < kLongestTrack ? std::llround(seconds * 1e6) : 0;
}

std::string artURL(NSDictionary* information) {
    id value = information[@"kMRMediaRemoteNowPlayingInfoArtworkData"];
    if (![value isKindOfClass:[NSData class]] || [value length] == 0) return {};
    NSString* base64 = [value base64EncodedStringWithOptions:0];
    return std::string("data:image;base64,") + [base64 UTF8String];
}

MediaRemote::State stateOf(NSDictionary* information, const std::string& bundleIdentifier,
                           bool isPlaying) {
    return {.track = {.title = textOf(information, @"kMRMediaRemoteNowPlayingInfoTitle"),
                      .artist = textOf(information, @"kMRMediaRemoteNowPlayingInfoArtist"),
                      .album = textOf(information, @"kMRMediaRemoteNowPlayingInfoAlbum"),
                      .bundleIdentifier = bundleIdentifier,
                      .durationMicros = durationMicros(information)},
            .isPlaying = isPlaying,
            .artURL = artURL(information)};
}

} // namespace

struct MediaRemote::Functions {
    void (*registerForNotifications)(dispatch_queue_t);
    void (*getInformation)(dispatch_queue_t, void (^)(CFDictionaryRef));
    void (*getIsPlaying)(dispatch_queue_t, void (^)(Boolean));
    void (*getClient)(dispatch_queue_t, void (^)(CFTypeRef));
    CFStringRef (*bundleIdentifierOf)(CFTypeRef client);
    Boolean (*sendCommand)(int, CFDictionaryRef);

    std::string identifierOf(CFTypeRef client) const {
        if (client == nullptr) return {};
        NSString* identifier = (__bridge NSString*)bundleIdentifierOf(client);
        const char* text = [identifier UTF8String];
        return text != nullptr ? text : std::string();
    }
};

MediaRemote::MediaRemote(const Functions& functions)
    : functions_(std::make_unique<const Functions>(functions)) {}
MediaRemote::~MediaRemote() = default;

std::unique_ptr<MediaRemote> MediaRemote::load() {
    void* library = ::dlopen(kFramework, RTLD_LAZY);
    if (library == nullptr) return nullptr;
    Functions found{};
    const bool isComplete =
        find(library, "MRMediaRemoteRegisterForNowPlayingNotifications",
             found.registerForNotifications) &&
        find(library, "MRMediaRemoteGetNowPlayingInfo", found.getInformation) &&
        find(library, "MRMediaRemoteGetNowPlayingApplicationIsPlaying", found.getIsPlaying) &&
        find(library, "MRMediaRemoteGetNowPlayingClient", found.getClient) &&
        find(library, "MRNowPlayingClientGetBundleIdentifier", found.bundleIdentifierOf) &&
        find(library, "MRMediaRemoteSendCommand", found.sendCommand);
    return isComplete ? std::unique_ptr<MediaRemote>(new MediaRemote(found)) : nullptr;
}

void MediaRemote::observe(dispatch_queue_t queue, std::function<void()> changed) {
    NSOperationQueue* operations = [[NSOperationQueue alloc] init];
    operations.underlyingQueue = queue;
    for (NSString* name in @[
             @"kMRMediaRemoteNowPlayingInfoDidChangeNotification",
             @"kMRMediaRemoteNowPlayingApplicationDidChangeNotification",
             @"kMRMediaRemoteNowPlayingApplicationIsPlayingDidChangeNotification"
         ]) {
        // Never removed: the process ends first.
        (void)[[NSNotificationCenter defaultCenter] addObserverForName:name
                                                                object:nil
                                                                 queue:operations
                                                            usingBlock:^(NSNotification*) {
                                                              changed();
                                                            }];
    }
    functions_->registerForNotifications(queue);
}

void MediaRemote::ask(dispatch_queue_t queue, std::function<void(const State&)> take) {
    const Functions* functions = functions_.get();
    functions->getClient(queue, ^(CFTypeRef client) {
      const std::string identifier = functions->identifierOf(client);
      functions->getIsPlaying(queue, ^(Boolean isPlaying) {
        functions->getInformation(queue, ^(CFDictionaryRef information) {
          take(stateOf((__bridge NSDictionary*)information, identifier, isPlaying != 0));
        });
      });
    });
}

bool MediaRemote::send(Command command) {
    if (functions_->sendCommand(static_cast<int>(command), nullptr) == 0) return false;
    // It goes to a server of the system; an answer to a question asked after it means it arrived.
    dispatch_semaphore_t answered = dispatch_semaphore_create(0);
    functions_->getIsPlaying(dispatch_get_global_queue(QOS_CLASS_USER_INITIATED, 0), ^(Boolean) {
      dispatch_semaphore_signal(answered);
    });
    return dispatch_semaphore_wait(answered, dispatch_time(DISPATCH_TIME_NOW, kLongestAnswer)) == 0;
}

} // namespace halvo::helper
