# Installs the build into a fresh prefix, builds a project outside this tree
# against the installed package, runs it, and runs the installed program.
file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix}
  RESULT_VARIABLE r)
if(r)
  message(FATAL_ERROR "install failed")
endif()

# One flat include folder per target, and the package files where
# find_package looks for them.
foreach(f include/KABrowser/core/ttree.h include/KABrowser/core/tassert.h
          include/KABrowser/host/kaobject2.h include/KABrowser/host/kahost_export.h
          include/KABrowser/browser/kabrowser_export.h
          lib/cmake/KABrowser/KABrowserConfig.cmake lib/cmake/KABrowser/KABrowserConfigVersion.cmake
          lib/cmake/KABrowser/KABrowserTargets.cmake)
  if(NOT EXISTS ${prefix}/${f})
    message(FATAL_ERROR "not installed: ${f}")
  endif()
endforeach()
file(GLOB nested LIST_DIRECTORIES true ${prefix}/include/KABrowser/*/*)
foreach(n ${nested})
  if(IS_DIRECTORY ${n})
    message(FATAL_ERROR "include folders must be flat: ${n}")
  endif()
endforeach()

execute_process(COMMAND ${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${WORK_DIR}/build
  -DCMAKE_PREFIX_PATH=${prefix} -DKABROWSER_EXPECTED_PREFIX=${prefix}
  -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF RESULT_VARIABLE r)
if(r)
  message(FATAL_ERROR "consumer configure failed")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK_DIR}/build RESULT_VARIABLE r)
if(r)
  message(FATAL_ERROR "consumer build failed")
endif()
execute_process(COMMAND ${WORK_DIR}/build/consumer RESULT_VARIABLE r OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(r OR NOT out MATCHES "consumer ok")
  message(FATAL_ERROR "consumer run failed (${r}): ${out}${err}")
endif()

# The installed program finds the installed libraries wherever the prefix
# is: without arguments it prints its usage and exits with 2; a loader
# failure exits with 127.
execute_process(COMMAND ${prefix}/bin/kabrowse RESULT_VARIABLE r OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT r EQUAL 2)
  message(FATAL_ERROR "installed kabrowse does not start (${r}): ${out}${err}")
endif()
