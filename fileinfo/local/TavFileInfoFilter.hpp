#pragma once

namespace tav {

class TavFileInfo;

/// Decides, item by item, what joins a listing of the older items and when the listing ends. This
/// one lets everything in.
class TavFileInfoFilter {
  public:
    TavFileInfoFilter() = default;
    TavFileInfoFilter(const TavFileInfoFilter&) = delete;
    TavFileInfoFilter& operator=(const TavFileInfoFilter&) = delete;
    virtual ~TavFileInfoFilter() = default;

    /// Whether the item joins the result. Setting the flag ends the listing after this item; it may
    /// be null. Here it is cleared.
    virtual bool includeItem(TavFileInfo& item, bool* stopAccumulating);
};

} // namespace tav
