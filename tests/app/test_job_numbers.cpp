// Every number the writer puts into a job file comes back from the reader as
// the written text says, across the whole range of 32-bit reals and integers:
// a value whose text is a number is read to the same bits as a correctly rounded
// conversion of that text, and a value written as asterisks or beyond the range
// stops the reading with that key's message.
#include <gtest/gtest.h>
#include <unistd.h>

#include <bit>
#include <cerrno>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "app/data_init.h"
#include "app/data_param.h"
#include "app/data_proc.h"
#include "app/job_file.h"

namespace {

using namespace data_param;
namespace fs = std::filesystem;

// A numeric key as the writer writes it, with the state it fills.
struct RealKey {
  std::string keyword;
  std::string message;
  std::vector<float*> targets;
};

std::vector<float*> cells(Vec3& v) { return {&v[0], &v[1], &v[2]}; }
std::vector<float*> cells(Mat3& m) {
  std::vector<float*> t;
  for (auto& row : m)
    for (auto& x : row) t.push_back(&x);
  return t;
}

const std::vector<RealKey>& real_keys() {
  static const std::vector<RealKey> keys = [] {
    std::vector<RealKey> k{
        {"CELL", "Error reading the cell parameters!",
         {&cel[0], &cel[1], &cel[2], &ang[0], &ang[1], &ang[2]}},
        {"WAVE", "Error reading the wavelength!", {&wavel}},
        {"TRANSF", "Error reading the transformation matrix!", cells(transhkl)},
        {"SCALE", "Error reading the scale factor!", {&scal_fact}},
        {"EPSIL", "Error reading the EPSIL value!", {&epsg}},
        {"KVEC", "Error reading the propagation vector!", cells(kv)},
        {"TWIN_trf", "Error reading the TWIN law file, item: TWIN_trf", cells(tr)},
        {"TWIN_ubm", "Error reading the TWIN law file, item: TWIN_ubm", cells(ubm)},
    };
    // TWIN_mat lines fill the domains in the order of the file.
    for (int i = 1; i <= 3; ++i)
      k.push_back({"TWIN_mat" + std::to_string(i), "Error reading the TWIN law file, item: TWIN_mat",
                   cells(twin[i])});
    return k;
  }();
  return keys;
}

// The written text read independently: the C library's conversion, with
// nothing left over and a finite result.
std::optional<float> text_real(const std::string& word) {
  errno = 0;
  char* end = nullptr;
  const float v = std::strtof(word.c_str(), &end);
  if (word.empty() || *end != '\0' || std::isinf(v) || std::isnan(v)) return std::nullopt;
  return v;
}

std::optional<int> text_integer(const std::string& word) {
  errno = 0;
  char* end = nullptr;
  const long v = std::strtol(word.c_str(), &end, 10);
  if (word.empty() || *end != '\0' || errno != 0 || v < INT_MIN || v > INT_MAX) return std::nullopt;
  return static_cast<int>(v);
}

std::vector<std::string> words(const std::string& line) {
  std::istringstream in(line);
  std::vector<std::string> w;
  for (std::string s; in >> s;) w.push_back(s);
  return w;
}

// What a reader must make of the written text.
struct Expected {
  std::map<float*, float> reals;
  std::optional<int> hkl, twin_type;
  std::string message;  // empty: read to the end
  std::string failed_key;
};

Expected expected_from(const std::string& text) {
  Expected e;
  std::istringstream in(text);
  int matrices = 0;
  auto stop = [&e](const std::string& key, const std::string& message) {
    e.failed_key = key;
    e.message = message;
  };
  for (std::string line; std::getline(in, line) && e.message.empty();) {
    auto w = words(line);
    if (w.empty()) continue;
    std::string keyword = w[0];
    w.erase(w.begin());
    if (keyword == "HKL_T" || keyword == "TWIN_typ") {
      const std::optional<int> v = text_integer(w.empty() ? std::string() : w[0]);
      const bool twin = keyword == "TWIN_typ";
      if (!v.has_value()) {
        stop(keyword, twin ? "Error reading the TWIN law file, item: TWIN_typ"
                           : "Error reading the type of the reflection file!");
        continue;
      }
      const int value = v.value_or(0);
      (twin ? e.twin_type : e.hkl) = value;
      if (twin && (value < 1 || value > 3)) stop(keyword, "Illegal TWIN_typ: It should be 1,2 or 3!");
      continue;
    }
    if (keyword == "TWIN_mat") keyword += std::to_string(++matrices);
    for (const auto& key : real_keys()) {
      if (key.keyword != keyword) continue;
      std::vector<float> values;
      for (std::size_t i = 0; i < key.targets.size() && i < w.size(); ++i)
        if (const auto v = text_real(w[i])) values.push_back(*v);
      if (values.size() != key.targets.size()) {
        stop(keyword, key.message);
        break;
      }
      for (std::size_t i = 0; i < values.size(); ++i) e.reals[key.targets[i]] = values[i];
    }
  }
  return e;
}

class Values {
 public:
  std::size_t pick(std::size_t n) { return std::uniform_int_distribution<std::size_t>(0, n - 1)(rng_); }

  // A value the layouts can show, or with `anything` any 32-bit real at all:
  // every exponent, subnormals, the range limits, infinities and NaN.
  float real(bool anything) {
    if (!anything || pick(4) == 0) {
      const float mantissa = std::uniform_real_distribution<float>(1, 10)(rng_);
      const int exponent = static_cast<int>(pick(10)) - 6;
      return (pick(2) ? -1.0f : 1.0f) * mantissa * std::pow(10.0f, static_cast<float>(exponent));
    }
    if (pick(2) == 0) {
      static const float special[] = {0.0f, -0.0f, FLT_MAX, -FLT_MAX, FLT_MIN, -FLT_MIN,
                                      std::numeric_limits<float>::denorm_min(), 1e-40f, -3e-42f,
                                      INFINITY, -INFINITY, NAN, 99999.99995f, -9999.99995f,
                                      9999.5f, 3.40e38f, -3.4028e38f, 1e30f, -1e10f};
      return special[pick(std::size(special))];
    }
    return std::bit_cast<float>(static_cast<std::uint32_t>(rng_()));
  }

  int integer(bool anything) {
    if (!anything) return static_cast<int>(pick(12)) - 1;
    static const int special[] = {INT_MIN, INT_MAX, 9999, 10000, -999, -1000, 0, 4};
    return pick(3) == 0 ? special[pick(std::size(special))] : static_cast<int>(rng_());
  }

 private:
  std::mt19937 rng_{4711};
};

class JobNumbers : public ::testing::Test {
 protected:
  void SetUp() override {
    // Every save is flushed to disk; in memory that costs nothing.
    std::string tmpl = fs::is_directory("/dev/shm") ? "/dev/shm/jobnumbers-XXXXXX" : "/tmp/jobnumbers-XXXXXX";
    ASSERT_NE(::mkdtemp(tmpl.data()), nullptr);
    dir = tmpl;
    job_file::set_message_sink([this](std::string_view m) { messages.emplace_back(m); });
  }
  void TearDown() override {
    job_file::set_message_sink({});
    fs::remove_all(dir);
  }
  fs::path dir;
  std::vector<std::string> messages;
};

TEST_F(JobNumbers, EveryWrittenNumberIsReadAsItsTextSays) {
  Values values;
  const auto& keys = real_keys();
  // For each key: files where it was read, and where it stopped the reading.
  std::map<std::string, std::pair<int, int>> seen;
  std::size_t compared = 0;
  for (int file = 0; file < 1000; ++file) {
    SCOPED_TRACE("file " + std::to_string(file));
    data_init::init_variables();
    // Keys in front of the probe get values that can be shown, so that every
    // key is reached; from the probe on anything goes.
    const std::size_t probe = values.pick(keys.size() + 2);
    for (std::size_t k = 0; k < keys.size(); ++k)
      for (float* t : keys[k].targets) *t = values.real(k >= probe && values.pick(2) == 0);
    // HKL_T stands between WAVE and TRANSF in the file.
    hkl_type = values.integer(probe == 2 && values.pick(2) == 0);
    itwin = 1 + static_cast<int>(values.pick(3));
    if (probe == keys.size() + 1) itwin = values.integer(true);
    cell_given = wave_given = transf_ind = scale_given = eps_given = prop = true;
    twinned = values.pick(4) != 0;
    itransf = iubm = twinned;
    nmat = static_cast<int>(values.pick(4));

    data_proc::exit_code = 0;
    file_inp = (dir / "job.omb").string();
    data_proc::write_ombrel_file();
    ASSERT_EQ(data_proc::exit_code, 0);
    std::ifstream in(dir / "job.omb", std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const Expected want = expected_from(text);

    data_init::init_variables();
    messages.clear();
    file_inp = (dir / "job.omb").string();
    data_proc::read_ombrel_file();

    SCOPED_TRACE(text);
    if (want.message.empty()) {
      ASSERT_EQ(data_proc::exit_code, 0);
      ASSERT_TRUE(messages.empty()) << messages.front();
    } else {
      ASSERT_EQ(data_proc::exit_code, -1);
      ASSERT_EQ(messages, std::vector<std::string>{want.message});
      ++seen[want.failed_key].second;
    }
    for (const auto& key : keys) {
      for (float* t : key.targets) {
        const auto it = want.reals.find(t);
        // A value not read keeps its default.
        const float expect = it == want.reals.end() ? 0.0f : it->second;
        ASSERT_EQ(std::bit_cast<std::uint32_t>(*t), std::bit_cast<std::uint32_t>(expect))
            << key.keyword << ": read " << *t << ", text says " << expect;
        compared += it != want.reals.end();
      }
      if (want.reals.count(key.targets[0])) ++seen[key.keyword].first;
    }
    ASSERT_EQ(hkl_type, want.hkl.value_or(0));
    ASSERT_EQ(itwin, want.twin_type.value_or(0));
    if (want.hkl) ++seen["HKL_T"].first;
    if (want.twin_type) ++seen["TWIN_typ"].first;
  }
  // The mix reaches every key both ways.
  for (const auto& key : keys) {
    EXPECT_GE(seen[key.keyword].first, 10) << key.keyword;
    if (key.keyword != "TWIN_mat3") {
      EXPECT_GE(seen[key.keyword].second, 3) << key.keyword;
    }
  }
  for (const char* key : {"HKL_T", "TWIN_typ"}) EXPECT_GE(seen[key].second, 3) << key;
  EXPECT_GT(compared, 10000u);
}

}  // namespace
