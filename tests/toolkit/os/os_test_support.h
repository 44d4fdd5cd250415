// Shared set-up of the operating-system layer tests.
#pragma once

#include <gtest/gtest.h>

#include "toolkit/kernel/zelvy_data.h"

// Starts every case from a clean error state and leaves the decimal-mark and
// listing settings as it found them.
class OsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    zelvy_data::ierr = zelvy_data::istat = zelvy_data::iapierr = zelvy_data::ioetype = 0;
    zelvy_data::idbug = 0;
    zelvy_data::idecimal = 0;
    zelvy_data::cdecimal = ' ';
    zelvy_data::idirinfo = 1;
  }
  void TearDown() override {
    zelvy_data::idecimal = 0;
    zelvy_data::cdecimal = ' ';
    zelvy_data::idirinfo = 1;
  }
  // Reads and clears the error code.
  static int error() { return WInfoError(1); }
};
