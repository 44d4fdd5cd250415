// zelvrc [-o tables.cpp] [-n accessor] [-i ids.h] [-s namespace] script.zrc...:
// compiles resource scripts into the constant tables and, with -i, the header
// of their named identifiers. A malformed script stops the build with file
// and line, and leaves neither output behind.
#include <cstdio>
#include <fstream>
#include <iostream>
#include <sstream>

#include "tools/rc/rc.h"

namespace {

bool write_file(const std::string& path, const std::string& text) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  return static_cast<bool>(out << text) && static_cast<bool>(out.flush());
}

}  // namespace

int main(int argc, char** argv) {
  std::string output, ids, accessor = "resource_tables", scope = "resource_ids";
  std::vector<std::string> inputs;
  for (int k = 1; k < argc; ++k) {
    std::string a = argv[k];
    if (a == "-o" && k + 1 < argc) output = argv[++k];
    else if (a == "-n" && k + 1 < argc) accessor = argv[++k];
    else if (a == "-i" && k + 1 < argc) ids = argv[++k];
    else if (a == "-s" && k + 1 < argc) scope = argv[++k];
    else inputs.push_back(a);
  }
  if ((output.empty() && ids.empty()) || inputs.empty() || !zelvrc::valid_name(scope)) {
    std::cerr << "usage: zelvrc [-o output.cpp] [-n accessor] [-i ids.h] [-s namespace] script.zrc...\n";
    return 2;
  }
  auto remove_outputs = [&] {
    if (!output.empty()) std::remove(output.c_str());
    if (!ids.empty()) std::remove(ids.c_str());
  };
  try {
    zelvrc::Script script;
    for (const std::string& in : inputs) {
      std::ifstream f(in, std::ios::binary);
      if (!f) {
        std::cerr << in << ": error: cannot read the script\n";
        remove_outputs();
        return 1;
      }
      std::ostringstream text;
      text << f.rdbuf();
      zelvrc::parse_script(script, text.str(), in);
    }
    std::vector<std::string> names;  // the generated files shouldn't carry build paths
    for (const std::string& in : inputs) names.push_back(in.substr(in.find_last_of('/') + 1));
    // The tables are built even when only the header is asked for: their
    // checks are the script's checks.
    zelvrc::Tables tables = zelvrc::build_tables(script);
    if (!output.empty() && !write_file(output, zelvrc::emit_source(tables, names, accessor))) {
      std::cerr << output << ": error: cannot write the tables\n";
      remove_outputs();
      return 1;
    }
    if (!ids.empty() && !write_file(ids, zelvrc::emit_ids(script, names, scope))) {
      std::cerr << ids << ": error: cannot write the identifiers\n";
      remove_outputs();
      return 1;
    }
  } catch (const zelvrc::ScriptError& e) {
    std::cerr << e.what() << '\n';
    remove_outputs();
    return 1;
  }
  return 0;
}
