#pragma once

#include "platform/Seam.hpp"

#include <string>

namespace tav {

class UserFolders;

namespace internal {
/// The folders of the user that runs this process (platform/linux).
UserFolders& realUserFolders();
} // namespace internal

/// The seam to the folders that belong to the user. The answers are absolute paths without a
/// trailing slash (but "/" itself), as bytes; the folders need not exist, but for the temporary
/// one. Those in the home folder are empty when the host does not tell it. Any thread.
class UserFolders : public Seam<UserFolders, internal::realUserFolders> {
  public:
    virtual ~UserFolders() = default;

    /// Empty when the host does not tell it.
    virtual std::string home() = 0;
    /// Data of programs: the user's library and application support.
    virtual std::string data() = 0;
    /// The same for all users of the host.
    virtual std::string globalData() = 0;
    /// Settings of programs.
    virtual std::string configuration() = 0;
    /// What may be thrown away and made again.
    virtual std::string caches() = 0;
    /// For files that no one else may plant (nor read, unless the user chose so): made when
    /// missing; empty when no private one can be had.
    virtual std::string temporary() = 0;
};

} // namespace tav
