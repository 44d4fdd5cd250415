# The job file reader and writer, the reader fed with damaged files, and the
# numbers of every key carried through the file across their whole range.
zelv_test(NAME app_job_tests
  SOURCES ${CMAKE_CURRENT_LIST_DIR}/test_job_file.cpp ${CMAKE_CURRENT_LIST_DIR}/test_job_fuzz.cpp
    ${CMAKE_CURRENT_LIST_DIR}/test_job_numbers.cpp
  LIBS gombrel_app)
