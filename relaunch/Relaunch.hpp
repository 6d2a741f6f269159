#pragma once

#include "base/Status.hpp"
#include "platform/DesktopSession.hpp"

#include <string_view>

namespace tav {

/// Asks the application with this bundle identifier to quit. Success means that the request was
/// built and handed to the system, not that the application heeds it.
Status quitApplicationWithBundleID(std::string_view identifier, const DesktopSession& session);

/// The pass: stops the crash reporter, then quits and relaunches the main application or, when that
/// is not running, restarts the background application. Everything is named by the property list
/// `RelaunchAfterInstall.plist` in the resources of the running program.
///
/// Raises an `Exception` named "RelaunchAfterInstall" where the list is missing or lacks what is
/// needed next; what was done before stays done. Applications that cannot be signalled, asked or
/// launched are no error.
void relaunchAfterInstall();

/// The whole program: the pass, with its exceptions swallowed in silence. Answers 0 when it
/// answers.
int runRelaunchAfterInstall();

} // namespace tav
