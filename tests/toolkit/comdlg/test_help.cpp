// The help launcher without a display: the document's kind and address, and
// the viewer started from an initialisation file, with a stand-in viewer
// script that notes what it was given and stays up until the test ends it.
#include <gtest/gtest.h>

#include <sys/types.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/comdlg/help.h"
#include "toolkit/kernel/startup.h"

namespace fs = std::filesystem;

namespace {

constexpr int kNoFile = 1, kViewerFailed = 1030, kNoViewer = 1031;

std::string read(const fs::path& p) {
  std::ifstream f(p);
  return {std::istreambuf_iterator<char>(f), {}};
}

class HelpLauncher : public ::testing::Test {
 protected:
  void SetUp() override {
    dir = fs::temp_directory_path() / ("help_test_" + std::to_string(::getpid()));
    fs::create_directories(dir / "Html dir");
    saved = zelvy_data::data().cbrowser;
    WInfoError(1);
  }
  void TearDown() override {
    stop_viewer();
    zelvy_data::data().cbrowser = saved;
    fs::remove_all(dir);
  }

  // A viewer that writes its argument and its process id, then stays up.
  fs::path viewer(const std::string& name, bool stays = true) {
    const fs::path p = dir / name;
    std::ofstream(p) << "#!/bin/sh\nprintf '%s' \"$1\" > '" << (dir / "seen").string() << ".tmp'\n"
                     << "echo $$ > '" << (dir / "pid").string() << "'\n"
                     << "mv '" << (dir / "seen").string() << ".tmp' '" << (dir / "seen").string() << "'\n"
                     << (stays ? "exec sleep 60\n" : "exit 0\n");
    fs::permissions(p, fs::perms::owner_all);
    return p;
  }
  // The viewers as an initialisation file names them.
  void ini(const std::string& browser, const std::string& pdf) {
    const fs::path p = dir / "zelvy.ini";
    std::ofstream(p) << "[Setup]\nBROWSER = " << browser << "\nPDFREAD = " << pdf << "\n";
    ASSERT_TRUE(yyinireadfile(p.string()));
  }
  std::string seen() {
    for (int i = 0; i < 100 && !fs::exists(dir / "seen"); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(20));
    return read(dir / "seen");
  }
  void stop_viewer() {
    if (!fs::exists(dir / "pid")) return;
    const pid_t pid = std::stoi(read(dir / "pid"));
    if (pid > 0) ::kill(pid, SIGTERM);
    fs::remove(dir / "pid");
    fs::remove(dir / "seen");
  }

  fs::path dir;
  std::array<std::string, 2> saved;
};

TEST(HelpKinds, TheKindIsToldFromTheNameInAnyCase) {
  std::string file;
  EXPECT_EQ(yyhelpkind("/doc/Manual.PDF", file), HelpKind::Pdf);
  EXPECT_EQ(file, "/doc/Manual.PDF");  // the path keeps its case
  EXPECT_EQ(yyhelpkind("file:///doc/ombrel.HTML", file), HelpKind::Html);
  EXPECT_EQ(file, "/doc/ombrel.HTML");
  EXPECT_EQ(yyhelpkind("page.htm", file), HelpKind::Html);
  EXPECT_EQ(yyhelpkind("HTTPS://example.org/x.pdf", file), HelpKind::WebAddress);
  EXPECT_EQ(yyhelpkind("ms-its:/doc/Help.chm::/topic.htm", file), HelpKind::CompiledTopic);
  EXPECT_EQ(file, "/doc/Help.chm");
  EXPECT_EQ(yyhelpkind("old.hlp", file), HelpKind::OldHelp);
  EXPECT_EQ(yyhelpkind("x.col", file), HelpKind::Compiled);
  EXPECT_EQ(yyhelpkind("readme.txt", file), HelpKind::Unknown);
}

TEST(HelpKinds, TheAddressEscapesBlanksAndCarriesATopic) {
  EXPECT_EQ(yyhelpaddress("/a b/c d.html", false, -1), "file:///a%20b/c%20d.html");
  EXPECT_EQ(yyhelpaddress("/m.html", false, 12), "file:///m.html#12");
  EXPECT_EQ(yyhelpaddress("/m.html", false, 0), "file:///m.html");
  EXPECT_EQ(yyhelpaddress("http://x.org/a b", true, -1), "http://x.org/a%20b");
}

TEST_F(HelpLauncher, TheHtmlViewerGetsTheDocumentAsOneWord) {
  // The command line of the initialisation file goes to the shell: a blank in it is quoted there.
  ini("'" + viewer("html viewer.sh").string() + "'", "none");
  const fs::path page = dir / "Html dir" / "ombrel.html";
  std::ofstream(page) << "<html></html>";
  const auto t0 = std::chrono::steady_clock::now();
  WHelpFile("  " + page.string(), 12);
  EXPECT_EQ(WInfoError(1), 0);
  EXPECT_LT(std::chrono::steady_clock::now() - t0, std::chrono::seconds(2));  // back once it lives
  EXPECT_EQ(seen(), "file://" + dir.string() + "/Html%20dir/ombrel.html#12");
}

TEST_F(HelpLauncher, PdfGoesToItsOwnViewerWithThePathAlone) {
  ini("none", viewer("pdfview").string());
  const fs::path doc = dir / "Manual.PDF";
  std::ofstream(doc) << "%PDF";
  WHelpFile(doc.string(), 3);
  EXPECT_EQ(WInfoError(1), 0);
  EXPECT_EQ(seen(), doc.string());
}

TEST_F(HelpLauncher, AWebAddressIsNeverLookedFor) {
  ini(viewer("web").string(), "none");
  WHelpFile("https://example.org/no such page.html");
  EXPECT_EQ(WInfoError(1), 0);
  EXPECT_EQ(seen(), "https://example.org/no%20such%20page.html");
}

TEST_F(HelpLauncher, AFileBesideTheProgramIsFoundFromElsewhere) {
  ini(viewer("web").string(), "none");
  const fs::path beside = fs::canonical("/proc/self/exe").parent_path() / ("help_beside_" + std::to_string(::getpid()) + ".html");
  std::ofstream(beside) << "<html></html>";
  const fs::path before = fs::current_path();
  fs::current_path(dir);
  WHelpFile(beside.filename().string());
  fs::current_path(before);
  fs::remove(beside);
  EXPECT_EQ(WInfoError(1), 0);
  EXPECT_EQ(seen(), "file://" + beside.string());
}

TEST_F(HelpLauncher, FailuresAreReportedAndNothingIsStarted) {
  ini((dir / "no-such-viewer").string(), viewer("brief", false).string());
  const fs::path page = dir / "m.html";
  std::ofstream(page) << "<html></html>";
  // A viewer that isn't there, and one that ends at once.
  WHelpFile(page.string());
  EXPECT_EQ(WInfoError(1), kViewerFailed);
  std::ofstream(dir / "m.pdf") << "%PDF";
  WHelpFile((dir / "m.pdf").string());
  EXPECT_EQ(WInfoError(1), kViewerFailed);
  fs::remove(dir / "seen");
  fs::remove(dir / "pid");

  WHelpFile((dir / "missing.html").string());
  EXPECT_EQ(WInfoError(1), kNoFile);
  std::ofstream(dir / "old.chm") << "x";
  WHelpFile((dir / "old.chm").string());
  EXPECT_EQ(WInfoError(1), kNoViewer);  // there, but nothing here shows it
  WHelpFile((dir / "gone.chm").string());
  EXPECT_EQ(WInfoError(1), kNoFile);
  WHelpFile(page.string() + ".txt");
  EXPECT_EQ(WInfoError(1), kNoViewer);
  WHelpFile("    ");
  EXPECT_EQ(WInfoError(1), 0);  // blank: nothing at all
  EXPECT_FALSE(fs::exists(dir / "seen"));
}

}  // namespace
