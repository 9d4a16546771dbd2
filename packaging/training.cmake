# A build that knows what the tool does most (QVLEDGER_TRAINED).
#
# A first build in the folder training/ counts, while scripts/train has it report the sample's logs, how often each
# branch is taken.  The compiler lays the code out by these counts.  They are matched by function, so what has changed
# since they were taken, or was never run, is compiled as it would be without.  A build for another kind of machine
# cannot run here and is made without them.
include(CheckCXXCompilerFlag)
set(QVLEDGER_RECORD "" CACHE INTERNAL "Where this build writes what it counts; set for the first build alone")
set(QVLEDGER_COUNTS "" CACHE PATH "The counts/ of another build's first build, instead of one of this build's own")

set(prefix -fprofile-prefix-path=${CMAKE_BINARY_DIR}) # the two builds differ in nothing else
if(QVLEDGER_RECORD)
  add_compile_options(-fprofile-generate=${QVLEDGER_RECORD} ${prefix})
  add_link_options(-fprofile-generate)
endif()

set(first ${CMAKE_BINARY_DIR}/training)
set(counts ${first}/counts)
if(QVLEDGER_COUNTS)
  set(counts ${QVLEDGER_COUNTS})
endif()
if(QVLEDGER_TRAINED AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  add_compile_options(-fprofile-use=${counts} ${prefix} -fprofile-partial-training
    -Wno-missing-profile -Wno-coverage-mismatch)
  # Counted lengths make the compiler copy texts by string instructions, which start slower than a call of memcpy.
  check_cxx_compiler_flag(-mstringop-strategy=libcall has_stringop_strategy)
  if(has_stringop_strategy)
    add_compile_options(-mstringop-strategy=libcall)
  endif()
endif()

if(QVLEDGER_TRAINED AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND NOT QVLEDGER_COUNTS)
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS
    platform/*.cpp platform/*.h service/*.cpp service/*.h ala/*.cpp ala/*.h ala/*.inc tool/*.cpp tool/*.h samples/*)
  add_custom_command(OUTPUT ${first}/counted
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${counts}
    COMMAND ${CMAKE_COMMAND} -S ${CMAKE_SOURCE_DIR} -B ${first} -G ${CMAKE_GENERATOR} --log-level=WARNING
      -DCMAKE_BUILD_TYPE=${CMAKE_BUILD_TYPE} "-DCMAKE_CXX_FLAGS=${CMAKE_CXX_FLAGS}"
      -DCMAKE_CXX_COMPILER=${CMAKE_CXX_COMPILER} -DQVLEDGER_TESTS=OFF -DQVLEDGER_RECORD=${counts}
    COMMAND ${CMAKE_COMMAND} --build ${first} --target qvledger mksample
    COMMAND ${CMAKE_SOURCE_DIR}/scripts/train ${first}
    COMMAND ${CMAKE_COMMAND} -E touch ${first}/counted
    DEPENDS ${sources} scripts/train
    COMMENT "First build, and its reports of the sample's logs"
    VERBATIM)
  add_custom_target(training DEPENDS ${first}/counted)
endif()

# Has a target, and all that link it, compiled once the counts are there.
function(follow_training target)
  if(TARGET training)
    add_dependencies(${target} training)
  endif()
endfunction()
