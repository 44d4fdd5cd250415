add_executable(line_args_probe ${CMAKE_CURRENT_LIST_DIR}/line_args_probe.cpp)
target_link_libraries(line_args_probe PRIVATE gombrel_app)
zelv_test(NAME app_startup_tests SOURCES ${CMAKE_CURRENT_LIST_DIR}/test_startup.cpp LIBS gombrel_app)
target_compile_definitions(app_startup_tests PRIVATE PROBE_PATH="$<TARGET_FILE:line_args_probe>")
add_dependencies(app_startup_tests line_args_probe)

zelv_display_test(NAME gombrel_main_form_e2e
  COMMAND sh ${CMAKE_CURRENT_LIST_DIR}/main_form_e2e.sh $<TARGET_FILE:gombrel>
          ${CMAKE_SOURCE_DIR}/examples $<TARGET_FILE:zelv_xhelper> ${CMAKE_BINARY_DIR}/shots
  TIMEOUT 120)
