#include "platform/ImageService.hpp"

namespace tav::internal {
namespace {

class LinuxImageService final : public ImageService {
  public:
    // What desktops open as pictures, camera raw files among them: a fixed list, so that a name
    // means the same on every machine, whatever viewers are installed.
    std::vector<std::string> imageUnfilteredFileTypes() override {
        return {"3fr",   "arw",  "avif", "bmp",  "bw",   "cr2",  "cr3",  "crw", "cur",  "dcr",
                "dib",   "dng",  "eps",  "epsf", "epsi", "epsp", "erf",  "exr", "fax",  "fff",
                "fpix",  "fpx",  "gif",  "hdr",  "heic", "heif", "icns", "ico", "jfif", "jp2",
                "jpe",   "jpeg", "jpf",  "jpg",  "jpx",  "jxl",  "kdc",  "mac", "mos",  "mrw",
                "nef",   "nrw",  "orf",  "pbm",  "pct",  "pdf",  "pef",  "pgm", "pic",  "pict",
                "png",   "pnm",  "pnt",  "pntg", "ppm",  "ps",   "psd",  "qti", "qtif", "raf",
                "raw",   "rgb",  "rw2",  "rgba", "sgi",  "sr2",  "srf",  "srw", "svg",  "svgz",
                "targa", "tga",  "tif",  "tiff", "wbmp", "webp", "xbm",  "xpm"};
    }
};

} // namespace

ImageService& realImageService() {
    static LinuxImageService service;
    return service;
}

} // namespace tav::internal
