zelv_test(NAME support_numerics_linear_tests
  SOURCES
    ${CMAKE_CURRENT_LIST_DIR}/test_math_helpers.cpp
    ${CMAKE_CURRENT_LIST_DIR}/test_linear_algebra.cpp
    ${CMAKE_CURRENT_LIST_DIR}/test_eigen.cpp
    ${CMAKE_CURRENT_LIST_DIR}/test_integer_forms.cpp
  LIBS lorx)
