zelv_test(NAME support_strings_tests
  SOURCES ${CMAKE_CURRENT_LIST_DIR}/test_strings.cpp ${CMAKE_CURRENT_LIST_DIR}/test_messages.cpp
  LIBS lorx)
