# Profile-guided optimisation (QVLEDGER_TRAINED, g++ only).
#
# A first build, in the folder training/, counts how often each branch is taken while scripts/train reports the sample's
# logs.  The second build uses these counts.  A function that has changed since, or never ran, is compiled without them.
# A cross-compiled program cannot run here, so cross builds do not use counts.
include(CheckCXXCompilerFlag)
set(QVLEDGER_RECORD "" CACHE INTERNAL "Where this build writes its counts; set only in the first build")
set(QVLEDGER_COUNTS "" CACHE PATH "The counts/ of another build to use, instead of a first build")

set(prefix -fprofile-prefix-path=${CMAKE_BINARY_DIR}) # the only other difference between the two builds
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
  # With counts, the compiler copies texts with string instructions, which start more slowly than a memcpy call.
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
    COMMENT "First build for profile-guided optimisation, and its sample run"
    VERBATIM)
  add_custom_target(training DEPENDS ${first}/counted)
endif()

# Compiles a target, and all targets that link it, after the counts are available.
function(follow_training target)
  if(TARGET training)
    add_dependencies(${target} training)
  endif()
endfunction()
