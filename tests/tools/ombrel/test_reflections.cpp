// The reflection reader: each format from the columns its label names, the
// reason for every line it cannot use, and damaged or outsized input.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "reduce.h"
#include "reflections.h"

namespace {

using namespace stand_in;
using ::testing::HasSubstr;

TEST(Reading, FixedColumnsOfTheShortFormats) {
  // 3I4, 2F8.2: values may touch; without a point the last two digits are decimals.
  const ReadResult r = read_reflections(
      "   1  -2   3  100.50    2.25\n"
      "  10  10-10 1234567     150\n"
      "   1   2   3   12.00\n"
      "   1   2 x 3   12.00    1.00\n"
      "   0   0   0    0.00    0.00\n"
      "   4   4   4   10.00    1.00\n",
      0, false);
  ASSERT_EQ(r.observations.size(), 2u);
  EXPECT_EQ(r.observations[0].hkl[1], -2);
  EXPECT_DOUBLE_EQ(r.observations[0].intensity, 100.5);
  EXPECT_EQ(r.observations[1].hkl[2], -10);
  EXPECT_DOUBLE_EQ(r.observations[1].intensity, 12345.67);
  EXPECT_DOUBLE_EQ(r.observations[1].sigma, 1.5);
  ASSERT_EQ(r.rejected.size(), 3u);
  EXPECT_EQ(r.rejected[0].line, 3);
  EXPECT_THAT(r.rejected[0].reason, HasSubstr("sigma missing"));
  EXPECT_THAT(r.rejected[1].reason, HasSubstr("columns 9-12"));
  EXPECT_THAT(r.rejected[2].reason, HasSubstr("after the line 0 0 0"));

  // HKL_T 10 adds the domain code.
  const ReadResult d = read_reflections("   1   0   0   10.00    1.00  -2\n   1   0   0   10.00    1.00   1\n"
                                        "   2   0   0   10.00    1.00\n",
                                        10, false);
  ASSERT_EQ(d.observations.size(), 2u);
  EXPECT_EQ(d.observations[0].domain, -2);
  ASSERT_EQ(d.rejected.size(), 1u);
  EXPECT_THAT(d.rejected[0].reason, HasSubstr("domain code missing"));
}

TEST(Reading, FreeFormatsTakeTheirLabelledColumns) {
  struct Case {
    int type;
    const char* text;
    double h, intensity;
  };
  for (const Case& c : {Case{1, "1 2 3 40.5 2", 1, 40.5}, {3, "1 2 3 40.5 2 7 20.0 10 0 0", 1, 40.5},
                        {7, "1,2,3,40.5,2,1,1.1,30,0.9,0.1", 1, 40.5}, {4, "1234 5 6 7 80 4 10 5 0 0", 5, 80},
                        {6, "1234 5 6 7 80 4 10 5 0 0", 5, 80}, {9, "77 5 6 7 8.0D1 4 1 2 3 4", 5, 80},
                        {2, "1234 5 6 7\n 80 4 10 5 0", 5, 80}}) {
    SCOPED_TRACE(c.type);
    const ReadResult r = read_reflections(c.text, c.type, false);
    ASSERT_EQ(r.observations.size(), 1u) << (r.rejected.empty() ? "" : r.rejected[0].reason);
    EXPECT_EQ(r.observations[0].hkl[0], c.h);
    EXPECT_DOUBLE_EQ(r.observations[0].intensity, c.intensity);
  }
  // Two lines per reflection: a last line alone is named as such.
  const ReadResult two = read_reflections("1 1 0 0\n5 1\n2 2 0 0\n", 2, false);
  EXPECT_EQ(two.observations.size(), 1u);
  ASSERT_EQ(two.rejected.size(), 1u);
  EXPECT_EQ(two.rejected[0].line, 3);
  EXPECT_THAT(two.rejected[0].reason, HasSubstr("second line"));

  // Real indices only where they may be satellites.
  EXPECT_EQ(read_reflections("7 1 0.5 0 10 1", 5, false).rejected.at(0).reason, "index is not an integer");
  EXPECT_EQ(read_reflections("0 1 0.5 0 10 1", 5, true).observations.size(), 1u);
  // Flipping ratios: the label names no columns.
  const ReadResult flip = read_reflections("1 2 3 4 5", 8, false);
  EXPECT_TRUE(flip.observations.empty());
  EXPECT_THAT(flip.problem, HasSubstr("not read"));
}

TEST(Reading, DamagedAndOutsizedInput) {
  EXPECT_TRUE(read_reflections("", 1, false).observations.empty());
  EXPECT_TRUE(read_reflections("", 1, false).problem.empty());

  const std::string binary("\x01\x02\0\xff\n1 2 3 4 5\n", 16);
  EXPECT_THAT(read_reflections(binary, 1, false).problem, HasSubstr("binary"));

  const std::string longest(10'000, '7');
  const ReadResult l = read_reflections("1 2 3 4 5 " + longest + "\n" + longest + "\n1 1 1 1 1\n", 1, false);
  EXPECT_EQ(l.observations.size(), 1u);
  ASSERT_EQ(l.rejected.size(), 2u);
  EXPECT_THAT(l.rejected[0].reason, HasSubstr("characters"));
  EXPECT_LT(l.rejected[0].text.size(), 200u);

  const ReadResult big = read_reflections("99999999999 0 0 1 1\n2147483648 1 1 1 1\n1e300 0 0 1 1\n"
                                          "nan 0 0 1 1\n1 1 1 inf 1\n1 1 1 1 1e999\n",
                                          1, true);
  EXPECT_TRUE(big.observations.empty());
  EXPECT_EQ(big.rejected.size(), 6u);
  for (const auto& r : big.rejected) EXPECT_FALSE(r.reason.empty());

  // A million lines, each one reflection of m-3m.
  std::string many;
  many.reserve(30'000'000);
  char line[64];
  for (int i = 0; i < 1'000'000; ++i) {
    std::snprintf(line, sizeof line, "%4d%4d%4d%8.2f%8.2f\n", i % 23 - 11, i % 17 - 8, i % 5, 100.0 + i % 7, 5.0);
    many += line;
  }
  ReadResult m = read_reflections(many, 0, false);
  EXPECT_EQ(m.lines, 1'000'000);
  const auto g = SpaceGroup::find("P m -3 m", 90, 90);
  ASSERT_TRUE(g.has_value());
  const long read = static_cast<long>(m.observations.size());
  const Reduction r = reduce(std::move(m.observations), *g, {});
  EXPECT_EQ(r.used + r.outliers, read);
  EXPECT_GT(r.merged.size(), 100u);
}

// A file of several megabytes is read in two halves at once; the halves must
// join into what one pass gives, line numbers included.
TEST(Reading, ALargeFileReadsAsOnePass) {
  constexpr int kLines = 200'000;  // about 6 MB
  auto make = [](int end_at) {
    std::string text;
    char line[64];
    for (int n = 1; n <= kLines; ++n) {
      if (n == end_at) text += "   0   0   0    0.00    0.00\n";
      else if (n % 9973 == 0) text += "   1   2 x 3   12.00    1.00\r\n";
      else if (n % 7919 == 0) text += "! a note\n";
      else {
        std::snprintf(line, sizeof line, "%4d%4d%4d%8.2f%8.2f\n", n % 23 - 11, n % 17 - 8, n % 5 + 1, n % 1000 / 8.0, 2.5);
        text += line;
      }
    }
    return text;
  };
  const ReadResult r = read_reflections(make(0), 0, false);
  EXPECT_EQ(r.lines, kLines);
  EXPECT_EQ(r.comments, kLines / 7919);
  std::vector<long> lines, expected;
  for (const Observation& o : r.observations) lines.push_back(o.line);
  for (int n = 1; n <= kLines; ++n)
    if (n % 9973 != 0 && n % 7919 != 0) expected.push_back(n);
  EXPECT_EQ(lines, expected);
  EXPECT_DOUBLE_EQ(r.observations.back().intensity, kLines % 1000 / 8.0);
  ASSERT_EQ(r.rejected.size(), static_cast<std::size_t>(kLines / 9973));
  for (std::size_t i = 0; i < r.rejected.size(); ++i) EXPECT_EQ(r.rejected[i].line, 9973 * static_cast<long>(i + 1));

  // The end of the data in either half: every later line is refused.
  for (const int end_at : {10, kLines * 3 / 4}) {
    const ReadResult e = read_reflections(make(end_at), 0, false);
    EXPECT_EQ(e.lines, kLines);
    EXPECT_EQ(e.observations.back().line, end_at - 1);
    ASSERT_FALSE(e.rejected.empty());
    EXPECT_EQ(e.rejected.back().line, kLines);
    EXPECT_THAT(e.rejected.back().reason, HasSubstr("after the line 0 0 0"));
  }
}

// Damaged copies of a valid file in every format; what is read goes on
// through the reduction. Nothing may crash, leak or read out of bounds.
TEST(Reading, ThousandsOfDamagedFilesNeverBreakTheReader) {
  const std::string good =
      "   1   2   3  100.50    2.25   1\n  -1  -2  -3   99.00    3.00  -2\n"
      "! comment\n1234 1 0 0 10 1 2 3 4 5\n0.5 1 2 3 4 5 6\n   0   0   0    0.00    0.00\n";
  const auto g = SpaceGroup::find("F d -3 m", 90, 90);
  ASSERT_TRUE(g.has_value());
  std::mt19937 rng(7);
  const std::string alphabet = "0123456789 -+.,eEdD!#\n\r\t\0\xff";
  for (int i = 0; i < 3000; ++i) {
    std::string text = good;
    const int edits = 1 + static_cast<int>(rng() % 12);
    for (int e = 0; e < edits; ++e) {
      const std::size_t at = rng() % (text.size() + 1);
      switch (rng() % 3) {
        case 0: text.insert(at, 1, alphabet[rng() % alphabet.size()]); break;
        case 1: if (at < text.size()) text.erase(at, 1); break;
        default: if (at < text.size()) text[at] = static_cast<char>(rng() % 256); break;
      }
    }
    const int type = static_cast<int>(rng() % 12) - 1;
    Settings s;
    s.kvec = std::array<double, 3>{0.5, 0.5, 0.5};
    s.domain_codes = type == 10;
    s.cell = std::array<double, 6>{5, 5, 5, 90, 90, 90};
    ReadResult r = read_reflections(text, type, i % 2 == 0);
    for (const auto& rej : r.rejected) ASSERT_FALSE(rej.reason.empty());
    const Reduction red = reduce(std::move(r.observations), *g, s);
    for (const Merged& m : red.merged) ASSERT_TRUE(std::isfinite(m.intensity) && m.sigma > 0);
  }
}

}  // namespace
