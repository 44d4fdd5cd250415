# The job file reader and writer, and the reader fed with damaged files.
zelv_test(NAME app_job_tests
  SOURCES ${CMAKE_CURRENT_LIST_DIR}/test_job_file.cpp ${CMAKE_CURRENT_LIST_DIR}/test_job_fuzz.cpp
  LIBS gombrel_app)
