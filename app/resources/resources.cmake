# The resource scripts are compiled into constant tables at build time; the
# tables and the yyrc* routines that read them form the zelvres library.
set(ZELVRES_SCRIPTS
  ${CMAKE_CURRENT_LIST_DIR}/gombrel.zrc
  ${CMAKE_CURRENT_LIST_DIR}/toolkit.zrc
  ${CMAKE_CURRENT_LIST_DIR}/images.zrc
)
set(ZELVRES_TABLES ${CMAKE_BINARY_DIR}/generated/zelvres_tables.cpp)
add_custom_command(
  OUTPUT ${ZELVRES_TABLES}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/generated
  COMMAND zelvrc -o ${ZELVRES_TABLES} ${ZELVRES_SCRIPTS}
  DEPENDS zelvrc ${ZELVRES_SCRIPTS}
  COMMENT "Compiling the resource scripts"
  VERBATIM)
add_library(zelvres STATIC ${ZELVRES_TABLES} ${CMAKE_CURRENT_LIST_DIR}/yyrc.cpp)
target_include_directories(zelvres PUBLIC ${CMAKE_SOURCE_DIR})
target_link_libraries(zelvres PUBLIC ZLIB::ZLIB)
