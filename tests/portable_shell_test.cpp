// The ways in which a shell hands over the path of a folder, or does not.
#include <gtest/gtest.h>

#include "mobile/special_folders.h"
#include "mobile/work_folder.h"
#include "platform/portable/machine.h"
#include "support/test_machine.h"

namespace quaylink::test {
namespace {

using portable::CurrentMachine;
using portable::ShellName;

TEST(Shell, HandsOverAFoldersPathInOneOfThreeForms) {
  const struct {
    ShellName form;
    bool found;
  } cases[] = {{ShellName::kWide, true},
               {ShellName::kOffset, true},
               {ShellName::kInline, true},
               {ShellName::kUnknownKind, false},
               {ShellName::kNone, false}};
  for (const auto& [form, found] : cases) {
    TestMachine machine;
    CurrentMachine().specialFolders[CSIDL_APPDATA] = {"C:\\Dat\xC3\xA4n", form};
    EXPECT_EQ(GetSpecialFolderPath(CSIDL_APPDATA), found ? "C:\\Dat\xC3\xA4n" : "");
  }
}

TEST(Shell, ATrailingBackslashIsTakenOff) {
  TestMachine machine;
  machine.SetSpecialFolder(CSIDL_PERSONAL, "C:\\");
  EXPECT_EQ(GetSpecialFolderPath(CSIDL_PERSONAL), "C:");
  // The second half of a Japanese character is none.
  CurrentMachine().ansiCodePage = 932;
  const std::string japanese = "C:\\\x8E\x91\x97\xBF\x95\x5C";
  CurrentMachine().specialFolders[CSIDL_PERSONAL] = {japanese, ShellName::kInline};
  EXPECT_EQ(GetSpecialFolderPath(CSIDL_PERSONAL), japanese);
  CurrentMachine().hostProgramPath = "C:\\\x95\x5C.exe";
  EXPECT_EQ(GetApplicationFolder(), "C:");
}

TEST(Shell, GivesNoPathWithoutDesktopOrAllocatorOrWhenItIsTooLong) {
  TestMachine machine;
  CurrentMachine().shellHasDesktop = false;
  EXPECT_EQ(GetSpecialFolderPath(CSIDL_APPDATA), "");
  CurrentMachine().shellHasDesktop = true;
  CurrentMachine().shellHasAllocator = false;
  EXPECT_EQ(GetSpecialFolderPath(CSIDL_APPDATA), "");
  CurrentMachine().shellHasAllocator = true;
  const std::string longest = "C:\\" + std::string(256, 'x');
  machine.SetSpecialFolder(CSIDL_APPDATA, longest);
  EXPECT_EQ(GetSpecialFolderPath(CSIDL_APPDATA), longest);
  machine.SetSpecialFolder(CSIDL_APPDATA, longest + "x");
  EXPECT_EQ(GetSpecialFolderPath(CSIDL_APPDATA), "");
}

TEST(ApplicationFolder, IsThatOfTheHostsProgram) {
  struct Case {
    std::string program;
    std::string folder;
  };
  const std::string longFolder = "C:\\" + std::string(250, 'x');
  const Case cases[] = {
      {"C:\\Program Files\\Host\\host.exe", "C:\\Program Files\\Host"},
      {"C:\\host.exe", "C:"},
      {"host.exe", "host.exe"},
      {longFolder + "\\a program with a name.exe", longFolder},  // cut after 259 characters
  };
  for (const Case& c : cases) {
    TestMachine machine;
    CurrentMachine().hostProgramPath = c.program;
    EXPECT_EQ(GetApplicationFolder(), c.folder);
  }
}

}  // namespace
}  // namespace quaylink::test
