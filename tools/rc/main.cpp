// zelvrc -o tables.cpp [-n accessor] script.zrc...: compiles resource scripts into the
// constant tables. A malformed script stops the build with file and line.
#include <cstdio>
#include <fstream>
#include <iostream>
#include <sstream>

#include "tools/rc/rc.h"

int main(int argc, char** argv) {
  std::string output, accessor = "resource_tables";
  std::vector<std::string> inputs;
  for (int k = 1; k < argc; ++k) {
    std::string a = argv[k];
    if (a == "-o" && k + 1 < argc) output = argv[++k];
    else if (a == "-n" && k + 1 < argc) accessor = argv[++k];
    else inputs.push_back(a);
  }
  if (output.empty() || inputs.empty()) {
    std::cerr << "usage: zelvrc -o output.cpp [-n accessor] script.zrc...\n";
    return 2;
  }
  try {
    zelvrc::Script script;
    for (const std::string& in : inputs) {
      std::ifstream f(in, std::ios::binary);
      if (!f) {
        std::cerr << in << ": error: cannot read the script\n";
        return 1;
      }
      std::ostringstream text;
      text << f.rdbuf();
      zelvrc::parse_script(script, text.str(), in);
    }
    std::vector<std::string> names;  // the generated file shouldn't carry build paths
    for (const std::string& in : inputs) names.push_back(in.substr(in.find_last_of('/') + 1));
    std::string source = zelvrc::emit_source(zelvrc::build_tables(script), names, accessor);
    std::ofstream out(output, std::ios::binary | std::ios::trunc);
    if (!(out << source) || !out.flush()) {
      std::cerr << output << ": error: cannot write the tables\n";
      out.close();
      std::remove(output.c_str());
      return 1;
    }
  } catch (const zelvrc::ScriptError& e) {
    std::cerr << e.what() << '\n';
    std::remove(output.c_str());
    return 1;
  }
  return 0;
}
