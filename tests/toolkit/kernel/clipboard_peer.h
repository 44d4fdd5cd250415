// Another program on the clipboard, for the display tests: xclip reading
// what this program put there, or putting text there itself. The toolkit's
// loop keeps running while xclip reads, since this program answers it.
#pragma once

#include <X11/Xlib.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

#include <unistd.h>

#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"

class ClipboardPeer {
 public:
  ClipboardPeer() : dir_(std::filesystem::temp_directory_path() / ("zelv_clip_" + std::to_string(::getpid()))) {
    std::filesystem::create_directories(dir_);
  }
  ~ClipboardPeer() { std::filesystem::remove_all(dir_); }

  // Runs the toolkit's loop for a while, dropping its messages.
  static void pump(int ms) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
    int type = 0;
    MessageRecord m;
    while (std::chrono::steady_clock::now() < end) {
      XSync(xdisplay(), False);
      do WMessagePeek(type, m);
      while (type != -1);
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  }
  std::string read() const {
    const auto out = dir_ / "out", done = dir_ / "done";
    std::filesystem::remove(done);
    const std::string cmd =
        "(xclip -o -selection clipboard > '" + out.string() + "' 2>/dev/null; touch '" + done.string() + "') &";
    if (std::system(cmd.c_str()) != 0) return "<xclip did not start>";
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (!std::filesystem::exists(done) && std::chrono::steady_clock::now() < end) pump(20);
    std::ifstream in(out, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
  }
  // False when xclip failed. A target (UTF8_STRING) limits what it offers.
  bool write(const std::string& text, const std::string& target = "") const {
    const auto in = dir_ / "in";
    std::ofstream(in, std::ios::binary) << text;
    const std::string cmd = "xclip -i -selection clipboard" + (target.empty() ? "" : " -t " + target) + " '" +
                            in.string() + "' >/dev/null 2>&1";
    const bool ok = std::system(cmd.c_str()) == 0;
    pump(100);
    return ok;
  }

 private:
  std::filesystem::path dir_;
};
