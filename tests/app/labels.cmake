# Every text of the program whole with the default fonts, with pictures of
# each window in build/shots.
add_executable(labels_fit_tests ${CMAKE_CURRENT_LIST_DIR}/test_labels_fit.cpp)
target_link_libraries(labels_fit_tests PRIVATE gombrel_app GTest::gtest GTest::gtest_main)
target_compile_definitions(labels_fit_tests PRIVATE ZELV_BINARY_DIR="${CMAKE_BINARY_DIR}")
zelv_display_test(NAME labels_fit COMMAND $<TARGET_FILE:labels_fit_tests> TIMEOUT 180)
