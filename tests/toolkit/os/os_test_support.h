// Shared set-up of the operating-system layer tests.
#pragma once

#include <gtest/gtest.h>

#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"

// Starts every case from a clean error state and leaves the decimal-mark and
// listing settings as it found them.
class OsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    zelvy_data::data().ierr = zelvy_data::data().istat = zelvy_data::data().iapierr = zelvy_data::data().ioetype = 0;
    zelvy_data::data().idbug = 0;
    zelvy_data::data().idecimal = 0;
    zelvy_data::data().cdecimal = ' ';
    zelvy_data::data().idirinfo = 1;
  }
  void TearDown() override {
    zelvy_data::data().idecimal = 0;
    zelvy_data::data().cdecimal = ' ';
    zelvy_data::data().idirinfo = 1;
  }
  // Reads and clears the error code.
  static int error() { return WInfoError(1); }
};
