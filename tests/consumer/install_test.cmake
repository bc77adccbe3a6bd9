# Installs the library into a scratch prefix, then builds and runs a consumer
# against it twice: through find_package(qxutil) and through pkg-config.
# Before that, the installed shared library's dynamic symbol table is checked
# against the installed public headers (check_exports.py). Sanitized builds
# are skipped: a plain consumer cannot link them.
if(NOT QXUTIL_SANITIZE)
  add_test(NAME install_and_consume
           COMMAND ${CMAKE_COMMAND}
                   -DBUILD_DIR=${PROJECT_BINARY_DIR}
                   -DCONSUMER_DIR=${CMAKE_CURRENT_SOURCE_DIR}/consumer
                   -DWORK_DIR=${CMAKE_CURRENT_BINARY_DIR}/consumer-work
                   -DCXX=${CMAKE_CXX_COMPILER}
                   -DPYTHON=${Python3_EXECUTABLE}
                   -DSHARED=${BUILD_SHARED_LIBS}
                   -P ${CMAKE_CURRENT_SOURCE_DIR}/consumer/run_consumer.cmake)
  set_tests_properties(install_and_consume PROPERTIES LABELS install TIMEOUT 600)
endif()
