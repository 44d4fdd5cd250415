zelv_test(NAME support_numerics_special_tests
  SOURCES
    ${CMAKE_CURRENT_LIST_DIR}/test_special_functions.cpp
    ${CMAKE_CURRENT_LIST_DIR}/test_interpolation.cpp
    ${CMAKE_CURRENT_LIST_DIR}/test_format_reading.cpp
    ${CMAKE_CURRENT_LIST_DIR}/test_fractions.cpp
  LIBS lorx)
