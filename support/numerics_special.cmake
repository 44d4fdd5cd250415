target_sources(lorx PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/special_functions.cpp
  ${CMAKE_CURRENT_LIST_DIR}/interpolation.cpp
  ${CMAKE_CURRENT_LIST_DIR}/format_reading.cpp
  ${CMAKE_CURRENT_LIST_DIR}/fractions.cpp)
