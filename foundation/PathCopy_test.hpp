#pragma once

#include "foundation/FileManager.hpp"
#include "foundation/FileManager_test.hpp"
#include "foundation/FolderTree.hpp"

#include <iomanip>
#include <map>
#include <sstream>

namespace tav {

/// Copies and moves of everything that a folder may hold.
class PathCopyTest : public FileManagerTest {
  protected:
    /// What stands at a path and below it: each name with all that a copy shall bring.
    using Picture = std::map<std::string, std::string>;

    Status copy(std::string_view from, std::string_view to) {
        return copyPath(path(from), path(to));
    }
    Status move(std::string_view from, std::string_view to) {
        return movePath(path(from), path(to));
    }
    void setDate(std::string_view name, double seconds) {
        ASSERT_TRUE(files.setModificationDate(path(name), Date(seconds)).isNone()) << name;
    }
    void setPermissions(std::string_view name, std::uint32_t permissions) {
        ASSERT_TRUE(files.setPermissions(path(name), permissions).isNone()) << name;
    }
    /// Where the volume keeps some.
    void setAttribute(std::string_view name, std::string_view attribute, std::string_view value) {
        const SystemError error = files.setExtendedAttribute(path(name), attribute, bytesOf(value));
        ASSERT_TRUE(error.isNone() || error == SystemError(ENOTSUP)) << name;
    }

    /// A folder of everything, as small as that can be.
    void makeSource(std::string_view name = "from") {
        const std::string top(name);
        makeFolder(top);
        makeFolder(top + "/inner");
        makeFolder(top + "/inner/empty");
        makeFile(top + "/inner/file\xFF", "content");
        makeFile(top + "/.hidden", pattern(70'000));
        makeFile(top + "/none");
        makeLink(top + "/link", "../outside");
        makeLink(top + "/nowhere", "gone\xFE");
        setAttribute(top + "/.hidden", "user.type", "a\xFF");
        setAttribute(top + "/.hidden", "user.other", "");
        setAttribute(top + "/inner", "user.folder", "yes");
        setPermissions(top + "/.hidden", 0640);
        setPermissions(top + "/none", 0400);
        setPermissions(top + "/inner/empty", 0711);
        double date = 600'000'000.25;
        for (const char* each : {"/inner/empty", "/inner/file\xFF", "/.hidden", "/none", "/link",
                                 "/nowhere", "/inner", ""}) {
            setDate(top + each, ++date);
        }
        setPermissions(top + "/inner", 0550);
        setPermissions(top, 0750);
    }
    Picture pictureOf(std::string_view name) {
        Picture picture;
        addTo(picture, path(name), ".");
        return picture;
    }
    /// The same without what a volume may lose.
    static Picture contentsOf(Picture picture) {
        for (auto& [name, text] : picture) {
            text = text.substr(text.find('|') + 1);
        }
        return picture;
    }
    void removeAll(std::string_view name) {
        const auto there = files.attributes(path(name));
        if (there.ok() && there.value().kind == FileKind::Folder) {
            for (const char* inner : {"", "/inner"}) {
                static_cast<void>(files.setPermissions(path(name) + inner, 0700));
            }
        }
        if (there.ok()) {
            ASSERT_TRUE(removeItem(path(name)).isNone()) << name;
        }
    }

  private:
    void addTo(Picture& picture, const std::string& place, const std::string& name) {
        const auto attributes = files.attributes(place);
        if (!attributes.ok()) {
            picture[name] = "|error " + std::to_string(attributes.error().number());
            return;
        }
        const FileAttributes& there = attributes.value();
        std::ostringstream text;
        text << std::setprecision(17) << there.modificationDate.secondsSinceReferenceDate();
        if (there.kind != FileKind::Link) {
            text << ' ' << std::oct << there.permissions << std::dec;
            const auto names = files.extendedAttributeNames(place);
            std::map<std::string, std::string> sorted;
            for (const std::string& each : names.ok() ? names.value() : Names()) {
                if (each.starts_with("user.")) {
                    sorted[each] = textOf(files.extendedAttribute(place, each).value());
                }
            }
            for (const auto& [attribute, value] : sorted) {
                text << ' ' << attribute << '=' << value;
            }
        }
        text << '|';
        if (there.kind == FileKind::Link) {
            text << "link " << files.linkTarget(place).value();
        } else if (there.kind == FileKind::Regular) {
            text << "file " << textOf(files.readFile(place, unlimited).value());
        } else {
            text << "folder";
            const auto entries = files.folderEntries(place);
            for (const FolderEntry& entry : entries.value()) {
                addTo(picture, place + '/' + entry.name, name + '/' + entry.name);
            }
        }
        picture[name] = text.str();
    }
};

} // namespace tav
