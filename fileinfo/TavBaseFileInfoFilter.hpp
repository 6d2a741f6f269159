#pragma once

namespace tav {

class TavBaseFileInfo;

/// Decides, item by item, what joins a listing of a folder and when the listing ends.
class TavBaseFileInfoFilter {
  public:
    virtual ~TavBaseFileInfoFilter() = default;

    /// Whether the item joins the result. Setting the flag ends the listing after this item; the
    /// listing passes a flag that is false before its first item, and never null.
    virtual bool includeItem(TavBaseFileInfo& item, bool* stopAccumulating) = 0;

  protected:
    TavBaseFileInfoFilter() = default;
    TavBaseFileInfoFilter(const TavBaseFileInfoFilter&) = default;
    TavBaseFileInfoFilter& operator=(const TavBaseFileInfoFilter&) = default;
};

} // namespace tav
