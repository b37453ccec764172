#include "qt/QtApplication.h"

#include <QCoreApplication>

namespace halvo {

void QtApplication::terminate() {
    terminating_ = true;
    // Queued: the caller finishes first. Ending the loop rather than asking the windows to close,
    // so that none of them can refuse.
    queue_.async([] { QCoreApplication::exit(0); });
}

int QtApplication::run() {
    // A request from before may have been used up by another, nested loop.
    if (terminating_) terminate();
    return QCoreApplication::exec();
}

} // namespace halvo
