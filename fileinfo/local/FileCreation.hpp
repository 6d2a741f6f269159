#pragma once

#include "base/Data.hpp"
#include "base/Result.hpp"
#include "base/Value.hpp"

#include <string_view>

namespace tav::internal {

/// What may become of a file that stands where one is to be made.
enum class Existing : bool { Refused, Rewritten };

/// How often a new file's free name may be taken by somebody else, in the moment between looking
/// and making the file, before that is given up.
inline constexpr int mostNamesTried = 20;

/// Makes a file with a content and, where they are not null, attributes. One that is there is
/// rewritten in place or refused with EEXIST. The first failure: of the content, which may be
/// written in part then, or of the attributes.
SystemError createFileAtPath(std::string_view path, BytesView contents,
                             const Value::Dictionary* attributes, Existing existing);

/// Gives a file (no link) attributes by the platform's names: `NSFileHFSTypeCode`,
/// `NSFileHFSCreatorCode`, `NSFileExtensionHidden`, `NSFileCreationDate`, `NSFileModificationDate`,
/// `NSFilePosixPermissions` and `NSFileImmutable`, which takes the right to write from everybody.
/// Others, and values of another type, are passed over. All are tried; the first failure.
SystemError changeFileAttributes(std::string_view path, const Value::Dictionary& attributes);

} // namespace tav::internal
