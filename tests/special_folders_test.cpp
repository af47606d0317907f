// Folders that the shell knows, and copying trees into the work folder.
#include "mobile/special_folders.h"

#include <gtest/gtest.h>

#include "mobile/work_folder.h"
#include "support/test_machine.h"

namespace quaylink {
namespace {

TEST(SpecialFolders, CommonFilesAreThoseOf32BitProgramsWhereThereAreTwo) {
  TestMachine machine;
  machine.SetSpecialFolder(CSIDL_PROGRAM_FILES_COMMON, "C:\\Common");
  machine.SetSpecialFolder(CSIDL_PROGRAM_FILES_COMMONX86, "C:\\Common32");
  EXPECT_EQ(GetSpecialFolderPath(CSIDL_PROGRAM_FILES_COMMON), "C:\\Common");
  EXPECT_EQ(GetCommonFilesFolder(), "C:\\Common32");
  machine.SetSpecialFolder(CSIDL_PROGRAM_FILES_COMMONX86, "");
  EXPECT_EQ(GetCommonFilesFolder(), "C:\\Common");
}

TEST(WorkFolder, IsMadeInTheDocumentsFolderAndKept) {
  TestMachine machine;
  machine.SetSpecialFolder(CSIDL_PERSONAL, "C:\\Documents");
  machine.AddFolder("C:\\Documents");
  EXPECT_EQ(MakeWorkFolder(), "C:\\Documents\\Orvendel_WorkFolder\\");
  machine.WriteFile("C:\\Documents\\Orvendel_WorkFolder\\file", "1");
  MakeWorkFolder();
  EXPECT_TRUE(machine.Exists("C:\\Documents\\Orvendel_WorkFolder\\file"));
}

TEST(WorkFolder, ATreeIsCopiedWithAllItsLevelsOverWhatIsThere) {
  TestMachine machine;
  machine.WriteFile("C:\\From\\Tree\\1", "one");
  machine.WriteFile("C:\\From\\Tree\\a\\b\\c\\2", "two");
  machine.AddFolder("C:\\From\\Tree\\a\\empty");
  machine.WriteFile("C:\\From\\Beside\\3", "three");
  machine.WriteFile("C:\\To\\Tree\\1", "older and longer");
  CopyFolderTree("C:\\From\\", "C:\\To\\", "Tree");
  EXPECT_EQ(machine.ReadFile("C:\\To\\Tree\\1"), "one");
  EXPECT_EQ(machine.ReadFile("C:\\To\\Tree\\a\\b\\c\\2"), "two");
  EXPECT_TRUE(machine.Exists("C:\\To\\Tree\\a\\empty"));
  EXPECT_FALSE(machine.Exists("C:\\To\\Beside"));
}

TEST(WorkFolder, ATreeThatDoesNotExistGivesAnEmptyFolder) {
  TestMachine machine;
  machine.AddFolder("C:\\From");
  machine.AddFolder("C:\\To");
  CopyFolderTree("C:\\From\\", "C:\\To\\", "Tree");
  EXPECT_TRUE(machine.Exists("C:\\To\\Tree"));
}

}  // namespace
}  // namespace quaylink
