// SPDX-License-Identifier: MIT
// Whatever a node shows as its process id, it is one argument of `ps` and nothing to the shell.
#include "process_command_fixture.hpp"

#include <cstdlib>

namespace nimba::test {
namespace {

namespace fs = std::filesystem;

// In its scope the process works in another directory.
class WorkingIn final {
  public:
    explicit WorkingIn(const fs::path& directory) { fs::current_path(directory); }
    ~WorkingIn() { fs::current_path(before_); }
    WorkingIn(const WorkingIn&) = delete;
    WorkingIn& operator=(const WorkingIn&) = delete;

  private:
    fs::path before_ = fs::current_path();
};

// The `ps` of these tests keeps its arguments, a line each in brackets, in the file "arguments".
// Process ids that get through to the shell make the file "w".
class ProcessCommandQuoting : public ProcessCommand {
  protected:
    ProcessCommandQuoting()
    {
        make_ps(R"(printf '[%s]\n' "$@" >"$here/arguments")"
                "\necho app\n");
    }

    // Asks for the name of the process. Returns the arguments of `ps`, empty when it did not run.
    std::string arguments_for(const std::string& pid)
    {
        fs::remove(directory_.path() / "arguments");
        EXPECT_EQ(name_of(pid), "app");
        EXPECT_EQ(status_, 0);
        return exists("arguments") ? directory_.read("arguments") : "";
    }

    const WorkingIn working_{directory_.path()};
};

TEST_F(ProcessCommandQuoting, WouldBeSeenToBeMissing)
{
    // NOLINTNEXTLINE(cert-env33-c): what the others must not do
    ASSERT_EQ(std::system("ps -p 1 >/dev/null; : >w"), 0);
    EXPECT_EQ(directory_.read("arguments"), "[-p]\n[1]\n");
    EXPECT_TRUE(exists("w"));
}

TEST_F(ProcessCommandQuoting, IsNotNeededForDigits)
{
    EXPECT_EQ(arguments_for("1234567890"), "[-p]\n[1234567890]\n[-o]\n[comm=]\n");
    EXPECT_EQ(arguments_for("00"), "[-p]\n[00]\n[-o]\n[comm=]\n");
}

TEST_F(ProcessCommandQuoting, KeepsATextOneArgument)
{
    for (const std::string pid : {"1 2",    " 1",       "1 ",         "1\t2",
                                  "1\n2",   "a",        "-1",         "-A",
                                  "--help", "1,2",      "*",          "?",
                                  "[a-z]s", "~",        "$HOME",      "${HOME}",
                                  "$$",     "$1",       "$@",         "\\",
                                  "1\\",    "\\n",      "!",          "#",
                                  "# 1",    "1 # 2",    "{1,2}",      "a=b",
                                  "%s",     "\xff\x80", "1 -o args=", "-e -o comm= #"}) {
        EXPECT_EQ(arguments_for(pid), "[-p]\n[" + pid + "]\n[-o]\n[comm=]\n");
    }
}

TEST_F(ProcessCommandQuoting, KeepsQuotesInTheArgument)
{
    for (const std::string pid : {"'", "''", "'''", "1'2", "'1'", "\"", "\"\"", "1\"2", "'\"",
                                  "\\'", "'\\''", "'$HOME'", "\"$HOME\"", "`", "'\"'\"'"}) {
        EXPECT_EQ(arguments_for(pid), "[-p]\n[" + pid + "]\n[-o]\n[comm=]\n");
    }
}

TEST_F(ProcessCommandQuoting, KeepsAnEmptyTextAnArgument)
{
    EXPECT_EQ(arguments_for(""), "[-p]\n[]\n[-o]\n[comm=]\n");
}

TEST_F(ProcessCommandQuoting, LetsNothingRun)
{
    for (const std::string pid :
         {"1; : >w",   "1;: >w;",     "; : >w #",      "$(: >w)",        "`: >w`",
          "1 & : >w",  "1 && : >w",   "1 || : >w",     "1 | cat >w",     "1 >w",
          ">w",        "1 2>w",       "1\n: >w\n",     "'; : >w; '",     "\"; : >w; \"",
          "'$(: >w)'", "\"$(: >w)\"", "'`: >w`'",      "\\'; : >w; '",   "'\\''; : >w; '",
          "' >w '",    "'\n: >w\n'",  "${x:=$(: >w)}", "$((`: >w`))",    "<(: >w)",
          "(: >w)",    "{ : >w; }",   "1 -o x >w",     "'\"; : >w; \"'", "1; touch w",
          "$(touch w)"}) {
        EXPECT_EQ(arguments_for(pid), "[-p]\n[" + pid + "]\n[-o]\n[comm=]\n");
        EXPECT_FALSE(exists("w")) << pid;
    }
}

TEST_F(ProcessCommandQuoting, LetsNothingRunInTheLongestText)
{
    const std::string pid = std::string(40, '\'') + ";: >w;'";
    ASSERT_EQ(pid.size(), 47);
    EXPECT_EQ(arguments_for(pid), "[-p]\n[" + pid + "]\n[-o]\n[comm=]\n");
    EXPECT_FALSE(exists("w"));
}

}  // namespace
}  // namespace nimba::test
