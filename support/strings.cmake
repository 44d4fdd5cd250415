target_sources(lorx PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/lorx_string_utilities.cpp
  ${CMAKE_CURRENT_LIST_DIR}/lorx_io_messages.cpp
)
