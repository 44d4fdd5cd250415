// The error state: report texts, their details, the debug levels and reading.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"

namespace fs = std::filesystem;

namespace {

class ErrorTest : public ::testing::Test {
 protected:
  void SetUp() override {
    auto& d = zelvy_data::data();
    d.ierr = d.istat = d.iapierr = d.ioetype = d.idbug = 0;
    yySetErrorStatusSink(nullptr);
    yySetErrorBoxSink(nullptr);
  }
  void TearDown() override { SetUp(); }
};

TEST_F(ErrorTest, ReportTextsAndTheirDetails) {
  EXPECT_EQ(yyerrortext(1007, "WDialogLoad"), "Routine:WDialogLoad Error=1007:Dialog not present in resource");
  EXPECT_EQ(yyerrortext(1003, "YYWindowSelect"), "Internal routine:YYWindowSelect Error=1003:Invalid window handle");
  EXPECT_EQ(yyerrortext(27, "xxdriver"), "Internal routine:xxdriver Error=  27:Image file format not supported");
  EXPECT_EQ(yyerrortext(5, "WGrThing"), "Routine:WGrThing Error=   5:");  // a gap in the table
  zelvy_data::data().iapierr = 2;  // ENOENT
  EXPECT_EQ(yyerrortext(13, "IOsDirChange"), "Routine:IOsDirChange Error=  13:Operating system error: No such file or directory");
  zelvy_data::data().iapierr = -3;
  EXPECT_EQ(yyerrortext(1044, "WBitmapLoad"),
            "Routine:WBitmapLoad Error=1044:Zlib compression/decompression error: data error");
  zelvy_data::data().istat = 2;
  zelvy_data::data().ioetype = 1;  // run-time file i/o: no system text
  EXPECT_EQ(yyerrortext(1, "IOsCopyFile"), "Routine:IOsCopyFile Error=   1:Error opening file or device");
  zelvy_data::data().ioetype = 2;
  EXPECT_EQ(yyerrortext(1, "IOsCopyFile"),
            "Routine:IOsCopyFile Error=   1:Error opening file or device: No such file or directory");
}

TEST_F(ErrorTest, LevelsZeroAndOne) {
  testing::internal::CaptureStdout();
  yyerror(1121, "WindowOpenChild");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(WInfoError(1), 1121);
  EXPECT_EQ(WInfoError(1), 0);  // cleared by reading

  IDebugLevel(1);
  testing::internal::CaptureStdout();
  yyerror(1007, "WDialogLoad");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Routine:WDialogLoad Error=1007:Dialog not present in resource\n");
  EXPECT_EQ(WInfoError(4), 1);
  EXPECT_EQ(WInfoError(4), 1);  // not cleared
  EXPECT_EQ(WInfoError(1), 1007);
}

TEST_F(ErrorTest, LevelTwoAppendsToTheDebugFile) {
  const fs::path old = fs::current_path();
  const fs::path dir = fs::temp_directory_path() / ("kernel_errors_" + std::to_string(::getpid()));
  fs::create_directories(dir);
  fs::current_path(dir);
  IDebugLevel(2);
  yyerror(1003, "WindowSelect");
  yyerror(1121, "WindowOpenChild");
  std::ifstream in("debug");
  std::string a, b;
  std::getline(in, a);
  std::getline(in, b);
  fs::current_path(old);
  fs::remove_all(dir);
  EXPECT_EQ(a, "Routine:WindowSelect Error=1003:Invalid window handle");
  EXPECT_EQ(b, "Routine:WindowOpenChild Error=1121:Too many windows");
}

TEST_F(ErrorTest, LevelsThreeAndFourGoToTheirSinksOrPrint) {
  static std::string seen;
  IDebugLevel(3);
  testing::internal::CaptureStdout();
  yyerror(1003, "WindowOutStatusBar");  // no status bar yet: printed
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Routine:WindowOutStatusBar Error=1003:Invalid window handle\n");
  yySetErrorStatusSink([](std::string_view t) {
    seen = t;
    yyerror(1001, "WMenuSetState");  // an error inside the report is not reported again
  });
  testing::internal::CaptureStdout();
  yyerror(1121, "WindowOpenChild");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(seen, "Routine:WindowOpenChild Error=1121:Too many windows");
  EXPECT_EQ(WInfoError(1), 1121);  // restored after the report
  EXPECT_EQ(WInfoError(4), 3);

  IDebugLevel(4);
  yySetErrorBoxSink([](std::string_view t) {
    seen = t;
    return false;  // OK: the program goes on
  });
  yyerror(1087, "WDialogLoad");
  EXPECT_EQ(seen, "Routine:WDialogLoad Error=1087:Too many dialogs");
  EXPECT_EQ(WInfoError(1), 1087);
}

TEST_F(ErrorTest, ReadingItemsAndLevelBounds) {
  auto& d = zelvy_data::data();
  d.istat = 5;
  d.iapierr = 6;
  d.ioetype = 2;
  zelvy_comdlg::data().icderr = 7;
  // Each item read twice: all but the i/o type are cleared by reading.
  const int item_first_second[][3] = {{2, 5, 0}, {3, 6, 0}, {5, 2, 2}, {6, 7, 0}};
  for (const auto& c : item_first_second) {
    EXPECT_EQ(WInfoError(c[0]), c[1]) << c[0];
    EXPECT_EQ(WInfoError(c[0]), c[2]) << c[0];
  }
  IDebugLevel(2);
  IDebugLevel(5);
  IDebugLevel(-1);
  EXPECT_EQ(WInfoError(4), 2);
}

TEST_F(ErrorTest, MessageTextsByCategory) {
  for (const std::string expected : {"Too many windows    ", "Too many w"}) {
    std::string text(expected.size(), '#');  // a sized output is padded or cut to its width
    WInfoErrorMessage(1121, text);
    EXPECT_EQ(text, expected);
  }
  std::string free_text;
  WInfoErrorMessage(4, free_text, 4);
  EXPECT_EQ(free_text, "Failed to attach GLX context to target drawable");
  free_text = "kept";
  WInfoErrorMessage(1, free_text, 12);  // unknown category leaves the text
  EXPECT_EQ(free_text, "kept");
  free_text.clear();
  WInfoErrorMessage(999, free_text);
  EXPECT_EQ(free_text, "");
}

}  // namespace
