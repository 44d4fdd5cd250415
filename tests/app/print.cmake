# File > Print from the user's hand: no print command, a failing one, a working one.
zelv_display_test(NAME gombrel_print_e2e
  COMMAND sh ${CMAKE_CURRENT_LIST_DIR}/print_e2e.sh $<TARGET_FILE:gombrel>
          ${CMAKE_SOURCE_DIR}/examples $<TARGET_FILE:zelv_xhelper> ${CMAKE_BINARY_DIR}/shots
  TIMEOUT 180)
