# The main form bound to the job state, on the test display.
add_executable(app_form_tests ${CMAKE_CURRENT_LIST_DIR}/test_form_binding.cpp)
target_link_libraries(app_form_tests PRIVATE gombrel_app GTest::gtest GTest::gtest_main)
target_compile_definitions(app_form_tests PRIVATE ZELV_SOURCE_DIR="${CMAKE_SOURCE_DIR}")
zelv_display_test(NAME app_form_binding COMMAND $<TARGET_FILE:app_form_tests> TIMEOUT 300)
