#pragma once

#include "app/AppDelegate.h"
#include "fake/FakePlatform.h"
#include "ui/PanelContent.h"

#include <memory>
#include <string>

namespace halvo {

/// The whole application on fakes: two outputs, a ring, and a client that plays.
class OfflineMachine {
  public:
    OfflineMachine();
    ~OfflineMachine();

    AppDelegate& delegate() { return *delegate_; }
    FakePlatform& fake() { return fake_; }
    /// What the delegate hands to its panel.
    const PopoverServices& services() const { return *fake_.panelWindow.services; }
    /// "quit" runs the delegate's shutdown path and sets `hasQuit`.
    PanelHost host(VolumeTaper taper = VolumeTaper::identity);
    bool hasQuit() const { return hasQuit_; }

    /// Lets virtual time pass.
    void advance(MainQueue::Duration time) { fake_.mainQueue.advance(time); }
    /// Sets the spectrum to what the music has at this time, in seconds.
    void moveSpectrum(double seconds);
    void playTrack(const std::string& title, const std::string& artist);
    void unplugOutputs();

  private:
    FakePlatform fake_;
    std::shared_ptr<AppDelegate> delegate_;
    bool hasQuit_ = false;
};

} // namespace halvo
