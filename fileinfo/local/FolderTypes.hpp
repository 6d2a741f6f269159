#pragma once

#include <cstdint>

namespace tav::internal {

/// The four-character types of `findFolder`, those of the platform that the names come from.
enum class FolderType : std::uint32_t {
    Documents = 0x646F6373,          ///< "docs"
    Desktop = 0x6465736B,            ///< "desk"
    Downloads = 0x646F776E,          ///< "down"
    Music = 0xB5646F63,              ///< A micro sign (0xB5) and "doc"
    Pictures = 0x70646F63,           ///< "pdoc"
    Movies = 0x6D646F63,             ///< "mdoc"
    Public = 0x70756262,             ///< "pubb"
    CurrentUser = 0x63757372,        ///< "cusr": the home folder
    Library = 0x646C6962,            ///< "dlib"
    ApplicationSupport = 0x61737570, ///< "asup"
    Preferences = 0x70726566,        ///< "pref"
    CachedData = 0x63616368,         ///< "cach"
    Temporary = 0x74656D70,          ///< "temp"
};

/// The domains that `findFolder` takes for a volume.
enum class FolderDomain : std::int16_t {
    OnSystemDisk = -32768,
    OnAppropriateDisk = -32767,
    System = -32766,
    Local = -32765,
    Network = -32764,
    User = -32763,
};

} // namespace tav::internal
