#include "fileinfo/local/TavMacFileInfo.hpp"
#include "relaunch/ProcessOfBundle.hpp"
#include "relaunch/SuiteFixture_test.hpp"

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace tav {
namespace {

class ProcessOfBundleTest : public SuiteFixture {
  protected:
    static std::optional<int> find(std::string_view identifier) {
        BundleIdentifiers identifiers;
        const std::optional<ZoProcess> found = processWithIdentifier(identifier, identifiers);
        return found ? std::optional(found->processIdentifier()) : std::nullopt;
    }

    /// The walk as it is told, without any short cut: what every answer has to agree with.
    static std::optional<int> plainWalk(std::string_view identifier) {
        for (const ZoProcess& process : ZoProcess::allProcesses()) {
            const std::optional<std::string> path = process.executablePath();
            if (!path || !TavMacFileInfo::fileInfoWithPath(*path)->exists()) {
                continue;
            }
            const std::optional<Bundle> bundle = bundleForExecutablePath(*path);
            const std::optional<std::string> found =
                bundle ? bundle->bundleIdentifier() : std::nullopt;
            if (found && *found == identifier) {
                return process.processIdentifier();
            }
        }
        return std::nullopt;
    }

    static std::optional<std::string> bundlePathFor(std::string_view executable) {
        const std::optional<Bundle> bundle = bundleForExecutablePath(executable);
        return bundle ? std::optional(bundle->bundlePath()) : std::nullopt;
    }
};

TEST_F(ProcessOfBundleTest, TheBundleAroundContentsAndMacOSOwnsAnExecutable) {
    install("/A/X.app", "x");
    EXPECT_EQ(bundlePathFor("/A/X.app/Contents/MacOS/program"), "/A/X.app");
    EXPECT_EQ(bundlePathFor("/A/X.app/Contents/MacOS/missing"), "/A/X.app");
}

TEST_F(ProcessOfBundleTest, FolderNamesCompareIgnoringCase) {
    files.addFile("/A/X.app/CONTENTS/macos/program", "");
    EXPECT_EQ(bundlePathFor("/A/X.app/CONTENTS/macos/program"), "/A/X.app");
}

TEST_F(ProcessOfBundleTest, OtherPlacesBelongToNoBundle) {
    install("/A/X.app", "x");
    files.addFile("/A/X.app/program", "");
    files.addFile("/A/X.app/Contents/Resources/program", "");
    files.addFile("/A/X.app/Other/MacOS/program", "");
    EXPECT_EQ(bundlePathFor("/A/X.app/program"), std::nullopt);
    EXPECT_EQ(bundlePathFor("/A/X.app/Contents/Resources/program"), std::nullopt);
    EXPECT_EQ(bundlePathFor("/A/X.app/Other/MacOS/program"), std::nullopt);
    EXPECT_EQ(bundlePathFor("/MacOS/program"), std::nullopt);
    EXPECT_EQ(bundlePathFor("/"), "/");
    EXPECT_EQ(bundlePathFor(""), std::nullopt);
    EXPECT_EQ(bundlePathFor("/gone/X.app/Contents/MacOS/program"), std::nullopt);
}

TEST_F(ProcessOfBundleTest, AFolderIsItsOwnBundle) {
    install("/A/X.app", "x");
    EXPECT_EQ(bundlePathFor("/A/X.app"), "/A/X.app");
}

TEST_F(ProcessOfBundleTest, RightBelowTheRootTheBundleIsTheRoot) {
    files.addFile("/Contents/MacOS/program", "");
    EXPECT_EQ(bundlePathFor("/Contents/MacOS/program"), "/");
}

TEST_F(ProcessOfBundleTest, IdentifiersMatchExactly) {
    install("/A/X.app", "com.example.X");
    run(20, "/A/X.app");
    EXPECT_EQ(find("com.example.X"), 20);
    EXPECT_EQ(find("com.example.x"), std::nullopt);
    EXPECT_EQ(find("com.example.X "), std::nullopt);
    EXPECT_EQ(find(""), std::nullopt);
}

TEST_F(ProcessOfBundleTest, TheFirstInTheTableIsFound) {
    install("/A/X.app", "x");
    install("/B/X.app", "x");
    run(40, "/B/X.app");
    run(20, "/A/X.app");
    EXPECT_EQ(find("x"), 40);
}

TEST_F(ProcessOfBundleTest, AllUsersAreLookedAt) {
    table.ownUser = 1000;
    install("/A/X.app", "x");
    run(20, "/A/X.app").users = {0, 0};
    EXPECT_EQ(find("x"), 20);
}

TEST_F(ProcessOfBundleTest, WithoutAFileAtThePathThereIsNoMatch) {
    install("/A/X.app", "x");
    table.add(20, "/A/X.app/Contents/MacOS/removed");
    EXPECT_EQ(find("x"), std::nullopt);
}

TEST_F(ProcessOfBundleTest, UnreadableAndBadPathsArePassedOver) {
    install("/A/X.app", "x");
    install("/A/\xff.app", "x");
    run(20, "/A/X.app").executable.reset();
    run(21, "/A/\xff.app");
    run(22, "/A/X.app");
    EXPECT_EQ(find("x"), 22);
}

TEST_F(ProcessOfBundleTest, AnExecutableRightInsideItsBundleIsFoundOnlyAsAFolder) {
    install("/A/X.app", "x");
    files.addFile("/A/X.app/program", "");
    table.add(20, "/A/X.app/program");
    EXPECT_EQ(find("x"), std::nullopt);
    // The executable was removed and a bundle stands in its place.
    table.add(21, "/A/X.app").link = "/A/X.app (deleted)";
    EXPECT_EQ(find("x"), 21);
}

TEST_F(ProcessOfBundleTest, EachInformationListIsReadOnce) {
    install("/A/X.app", "x");
    install("/A/Y.app", "y");
    for (int i = 0; i < 50; ++i) {
        run(100 + i, "/A/X.app");
    }
    run(200, "/A/Y.app");
    BundleIdentifiers identifiers;
    for (const char* wanted : {"y", "z", "y"}) {
        static_cast<void>(processWithIdentifier(wanted, identifiers));
    }
    const std::vector<std::string> calls = files.calls();
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "readFile /A/X.app/Contents/Info.plist"), 1);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "readFile /A/Y.app/Contents/Info.plist"), 1);
}

TEST_F(ProcessOfBundleTest, ProcessesOutsideBundlesCostOneQuestion) {
    for (int i = 0; i < 50; ++i) {
        table.add(100 + i, "/usr/bin/tool");
    }
    table.questions.clear();
    const std::size_t callsBefore = files.calls().size();
    EXPECT_EQ(find("x"), std::nullopt);
    // One listing, one link each, and what the tool's own bundle takes.
    EXPECT_EQ(std::count_if(table.questions.begin(), table.questions.end(),
                            [](const std::string& question) {
                                return question.starts_with("executableLink ");
                            }),
              51);
    EXPECT_LE(table.questions.size(), 53U);
    EXPECT_LE(files.calls().size() - callsBefore, 4U);
}

TEST_F(ProcessOfBundleTest, AnswersAreThoseOfThePlainWalkOnRandomTables) {
    std::mt19937 random(47);
    const auto pick = [&random](std::size_t count) {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(random);
    };
    const std::vector<std::string> bundles = {"/A/X.app", "/A/Y.app", "/Contents", "/B/\xff.app",
                                              "/B/MacOS/Z.app"};
    const std::vector<std::string> insides = {
        "/Contents/MacOS/p", "/contents/MACOS/p", "/Contents/p", "/p", "", "/Contents/MacOS"};
    const std::vector<std::string> identifiers = {"x", "X", "y", "", "com.example.long"};
    // One cache for all of them, as in a pass: lists change, come and go under it.
    BundleIdentifiers known;
    for (int round = 0; round < 500; ++round) {
        table.table.clear();
        for (const std::string& bundle : bundles) {
            files.removeAll(bundle);
            switch (pick(5)) {
            case 0:
                break;
            case 1:
                files.addLink(bundle, bundles[pick(bundles.size())]);
                continue;
            case 2:
                files.addFile(bundle + "/Contents/Info.plist", "rubbish");
                break;
            default:
                install(bundle, identifiers[pick(identifiers.size())]);
            }
            for (const std::string& inside : insides) {
                if (inside.ends_with("/p")) {
                    switch (pick(3)) {
                    case 0:
                        files.addFile(bundle + inside, "");
                        break;
                    case 1:
                        files.removeAll(bundle + inside);
                        files.addLink(bundle + inside, bundles[pick(bundles.size())]);
                        break;
                    default:
                        break;
                    }
                }
            }
        }
        for (int process = 10; process < 30; ++process) {
            const std::string path = bundles[pick(bundles.size())] + insides[pick(insides.size())];
            MemoryProcess& entry = table.add(process, path);
            const Result<FileAttributes> attributes = files.attributes(path);
            if (pick(6) == 0) {
                entry.executable.reset();
            } else if (pick(4) == 0) {
                entry.link = "/moved/away (deleted)";
            } else if (attributes.ok() && attributes.value().kind != FileKind::Regular) {
                entry.link = path + " (deleted)";
            }
        }
        for (const std::string& identifier : identifiers) {
            const std::optional<ZoProcess> found = processWithIdentifier(identifier, known);
            ASSERT_EQ(found ? std::optional(found->processIdentifier()) : std::nullopt,
                      plainWalk(identifier))
                << round << " " << identifier;
        }
    }
}

} // namespace
} // namespace tav
