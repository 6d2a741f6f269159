#pragma once

#include "platform/ProcessTable.hpp"
#include "process/ProcessEnvironment.hpp"

#include <optional>
#include <string>
#include <vector>

namespace tav {

/// What a process's argument area says of it. A value.
struct ProcessArguments {
    /// Nothing when the area names no path, or one that is no UTF-8.
    std::optional<std::string> executablePath;
    /// The last path component of the first argument that names a program. Nothing when there is
    /// none: the kernel's short name is the command then, and the caller has to ask for it.
    std::optional<std::string> command;
    /// What a generic host process is really running: the widget of a widget host, the archive of a
    /// Java program.
    std::optional<std::string> annotation;
    /// The arguments after the command.
    std::vector<std::string> arguments;
    ProcessEnvironment environment;

    friend bool operator==(const ProcessArguments&, const ProcessArguments&) = default;
};

/// Reads an argument area. Every sequence of bytes has an answer, found in one walk.
///
/// Texts that are empty or no UTF-8 are passed over, wherever they stand, and so is a last one
/// without a NUL behind it. Rules that look odd and are meant:
/// - The launcher "LaunchCFMApp" is looked through: what it launched is the command.
/// - A text whose last path component equals the command repeats the program's own path: it is no
///   argument. The environment's "_=" entry is kept all the same.
/// - With "DashboardClient" anywhere, or under the commands "Konfabulator" and "java", the first
/// later
///   text that ends in ".wdgt" or ".widget" is the annotation (without the extension), or one that
///   ends in ".jar" (with it).
/// - The count of arguments goes down for each text that is dropped as launcher or repetition, not
/// for
///   texts that are passed over. Texts from the counted place on that contain "=" are environment;
///   with a count of 0 the arguments are left whole besides.
/// - A count that has fallen below 0 is as good as none.
/// - Without a count, the environment begins behind the last text that has no "=": an argument with
///   "=" right before it is taken for environment.
[[nodiscard]] ProcessArguments parseArgumentArea(ArgumentArea area);

} // namespace tav
