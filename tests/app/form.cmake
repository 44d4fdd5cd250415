# The main form bound to the job state, on the test display.
add_executable(app_form_tests ${CMAKE_CURRENT_LIST_DIR}/test_form_binding.cpp)
target_link_libraries(app_form_tests PRIVATE gombrel_app GTest::gtest GTest::gtest_main)
target_compile_definitions(app_form_tests PRIVATE ZELV_SOURCE_DIR="${CMAKE_SOURCE_DIR}")
zelv_display_test(NAME app_form_binding COMMAND $<TARGET_FILE:app_form_tests> TIMEOUT 300)

# The same from the user's hand: the program driven with the mouse and keys.
zelv_display_test(NAME gombrel_form_edit_e2e
  COMMAND sh ${CMAKE_CURRENT_LIST_DIR}/form_edit_e2e.sh $<TARGET_FILE:gombrel>
          ${CMAKE_SOURCE_DIR}/examples $<TARGET_FILE:zelv_xhelper> ${CMAKE_BINARY_DIR}/shots
  TIMEOUT 120)

# The whole workflow from the user's hand: open, save, run, views, failures.
zelv_display_test(NAME gombrel_workflow_e2e
  COMMAND sh ${CMAKE_CURRENT_LIST_DIR}/workflow_e2e.sh $<TARGET_FILE:gombrel>
          ${CMAKE_SOURCE_DIR}/examples $<TARGET_FILE:zelv_xhelper> ${CMAKE_BINARY_DIR}/shots
  TIMEOUT 300)

# What goes wrong in the workflow: double-click, binary and missing files,
# a save into a read-only directory.
zelv_display_test(NAME gombrel_workflow_failures_e2e
  COMMAND sh ${CMAKE_CURRENT_LIST_DIR}/workflow_failures_e2e.sh $<TARGET_FILE:gombrel>
          ${CMAKE_SOURCE_DIR}/examples $<TARGET_FILE:zelv_xhelper> ${CMAKE_BINARY_DIR}/shots
  TIMEOUT 180)

# The form's grid and fields with the clipboard of other programs (xclip).
add_executable(app_grid_clipboard_tests ${CMAKE_CURRENT_LIST_DIR}/test_grid_clipboard.cpp)
target_link_libraries(app_grid_clipboard_tests PRIVATE gombrel_app GTest::gtest GTest::gtest_main)
zelv_display_test(NAME app_grid_clipboard COMMAND $<TARGET_FILE:app_grid_clipboard_tests> TIMEOUT 120)

# The main window's toolbar from the user's hand, with screenshots.
zelv_display_test(NAME gombrel_toolbar_e2e
  COMMAND sh ${CMAKE_CURRENT_LIST_DIR}/toolbar_e2e.sh $<TARGET_FILE:gombrel>
          ${CMAKE_SOURCE_DIR}/examples $<TARGET_FILE:zelv_xhelper> ${CMAKE_BINARY_DIR}/shots
  TIMEOUT 120)
