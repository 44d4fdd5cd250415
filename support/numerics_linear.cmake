target_sources(lorx PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/math_helpers.cpp
  ${CMAKE_CURRENT_LIST_DIR}/linear_algebra.cpp
  ${CMAKE_CURRENT_LIST_DIR}/eigen.cpp
  ${CMAKE_CURRENT_LIST_DIR}/integer_forms.cpp
)
