#include <gtest/gtest.h>

#include "toolkit/base/text.h"

TEST(DeAmpersand, DropsMarksAndKeepsDoubledAmpersands) {
  EXPECT_EQ(yyStrDeAmpersand("&Open"), "Open");
  EXPECT_EQ(yyStrDeAmpersand("Save &as &Copy"), "Save as Copy");
  EXPECT_EQ(yyStrDeAmpersand("Fish && Chips"), "Fish && Chips");
  EXPECT_EQ(yyStrDeAmpersand("&&&x"), "&&x");
  EXPECT_EQ(yyStrDeAmpersand("end&"), "end&");  // a trailing mark has nothing to mark
  EXPECT_EQ(yyStrDeAmpersand(""), "");
}
