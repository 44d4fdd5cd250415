target_sources(gombrel_app PRIVATE ${CMAKE_CURRENT_LIST_DIR}/job_file.cpp)
