# cmake -P script behind the install_and_consume test.
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "failed (${rc}): ${ARGN}\n${out}\n${err}")
  endif()
  set(LAST_OUTPUT "${out}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})

# Exactly the public interface is exported.
if(SHARED AND PYTHON)
  file(GLOB_RECURSE libs ${prefix}/lib*/libqxutil.so)
  list(GET libs 0 lib)
  run(${PYTHON} ${CONSUMER_DIR}/check_exports.py ${lib} ${prefix}/include)
  message(STATUS "exports: ${LAST_OUTPUT}")
endif()

# find_package(qxutil) and the qxutil::qxutil target.
run(${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${WORK_DIR}/cmake-build
    -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${CXX})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/cmake-build)
run(${WORK_DIR}/cmake-build/consumer)
message(STATUS "find_package: ${LAST_OUTPUT}")

# pkg-config.
find_program(PKG_CONFIG pkg-config REQUIRED)
file(GLOB pcdirs ${prefix}/lib*/pkgconfig ${prefix}/lib/*/pkgconfig)
string(REPLACE ";" ":" pcpath "${pcdirs}")
set(ENV{PKG_CONFIG_PATH} ${pcpath})
run(${PKG_CONFIG} --cflags --libs qxutil)
string(STRIP "${LAST_OUTPUT}" flags)
separate_arguments(flags UNIX_COMMAND "${flags}")
run(${CXX} -std=c++20 ${CONSUMER_DIR}/main.cpp ${flags} -o ${WORK_DIR}/pc-consumer)
file(GLOB libdirs ${prefix}/lib ${prefix}/lib64 ${prefix}/lib/*-linux-gnu)
string(REPLACE ";" ":" ldpath "${libdirs}")
set(ENV{LD_LIBRARY_PATH} ${ldpath})
run(${WORK_DIR}/pc-consumer)
message(STATUS "pkg-config: ${LAST_OUTPUT}")
