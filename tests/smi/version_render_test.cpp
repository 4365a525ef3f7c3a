// SPDX-License-Identifier: MIT
#include "tools/smi/version/render.hpp"

#include <gtest/gtest.h>

namespace nimba::smi {
namespace {

VersionSnapshot snapshot_with(uint32_t match_code)
{
    return {"0.1.0", LibraryVersion{"/lib/x.so.0.1.0", "0.1.0", 22, 22, match_code}, {}};
}

TEST(VersionText, TellsToolLibraryInterfaceAndHandshake)
{
    EXPECT_EQ(version_text(snapshot_with(200)),
              "nimba-smi  0.1.0\n"
              "library    /lib/x.so.0.1.0 (0.1.0)\n"
              "interface  22 (this tool was built for 22)\n"
              "handshake  200: the versions match\n");
}

TEST(VersionText, TellsTheToolAloneWithoutALibrary)
{
    EXPECT_EQ(version_text({"0.1.0", std::nullopt, {}}), "nimba-smi  0.1.0\n");
}

TEST(VersionText, LeavesOutAPackageVersionThatIsNotKnown)
{
    VersionSnapshot snapshot = snapshot_with(200);
    snapshot.library->package_version.reset();
    EXPECT_NE(version_text(snapshot).find("library    /lib/x.so.0.1.0\n"), std::string::npos);
}

TEST(MatchMeaning, KnowsEveryCode)
{
    struct Case {
        uint32_t code;
        const char* word;
        const char* sentence;
    };
    for (const Case& c : {
             Case{100, "major-mismatch", "the major versions differ"},
             Case{200, "match", "the versions match"},
             Case{201, "compatible", "this tool is older, compatible"},
             Case{202, "client-newer", "this tool is newer, the library may lack what it needs"},
             Case{0, "unknown", "a code that this tool does not know"},
         }) {
        EXPECT_EQ(match_meaning(c.code).word, c.word);
        EXPECT_EQ(match_meaning(c.code).sentence, c.sentence);
    }
}

TEST(VersionJson, HasNullsWithoutALibrary)
{
    EXPECT_EQ(version_json({"0.1.0", std::nullopt, {}}),
              R"({
  "schema": "nimba-smi.version.1",
  "tool": {
    "version": "0.1.0"
  },
  "library": null,
  "interface": null,
  "errors": []
}
)");
}

}  // namespace
}  // namespace nimba::smi
