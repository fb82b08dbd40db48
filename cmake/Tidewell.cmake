# The one target that carries compiler flags; every target of the project links it.
add_library(tidewell_flags INTERFACE)
target_compile_options(tidewell_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-qual -Wformat=2
  -Werror -fno-omit-frame-pointer)
target_compile_definitions(tidewell_flags INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING QT_NO_CAST_FROM_BYTEARRAY
  QT_NO_KEYWORDS QT_NO_FOREACH QT_DISABLE_DEPRECATED_BEFORE=0x060400)
target_include_directories(tidewell_flags INTERFACE ${PROJECT_SOURCE_DIR}/src)
if(TIDEWELL_CHECK_INVARIANTS)
  target_compile_definitions(tidewell_flags INTERFACE TIDEWELL_CHECK_INVARIANTS)
endif()
if(TIDEWELL_SANITIZE)
  target_compile_options(tidewell_flags INTERFACE -fsanitize=${TIDEWELL_SANITIZE} -fno-sanitize-recover=all)
  target_link_options(tidewell_flags INTERFACE -fsanitize=${TIDEWELL_SANITIZE})
endif()
if(TIDEWELL_FUZZ)
  target_compile_options(tidewell_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()
find_program(TIDEWELL_LLD ld.lld)
if(TIDEWELL_LLD)
  target_link_options(tidewell_flags INTERFACE -fuse-ld=lld)
endif()

# tidewell_library(NAME SOURCES... LINK libs...): the static library of one folder of the ladder.
# Headers are listed among SOURCES so that moc sees those with Q_OBJECT.
function(tidewell_library name)
  cmake_parse_arguments(ARG "QT" "" "SOURCES;LINK" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC tidewell_flags ${ARG_LINK})
  if(ARG_QT)
    set_target_properties(${name} PROPERTIES AUTOMOC ON)
  endif()
endfunction()

# tidewell_test(NAME SOURCES... LINK libs...): one GoogleTest program; each test becomes a CTest test.
function(tidewell_test name)
  cmake_parse_arguments(ARG "QT" "TIMEOUT;LABEL" "SOURCES;LINK" ${ARGN})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE tidewell_flags GTest::gmock ${ARG_LINK})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  if(ARG_QT)
    set_target_properties(${name} PROPERTIES AUTOMOC ON)
    target_link_libraries(${name} PRIVATE tidewell_qt_test_main)
  else()
    target_link_libraries(${name} PRIVATE GTest::gtest_main)
  endif()
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST
    PROPERTIES TIMEOUT ${ARG_TIMEOUT} ENVIRONMENT "QT_QPA_PLATFORM=offscreen" LABELS "${ARG_LABEL}")
endfunction()

# tidewell_fuzz_target(NAME SOURCE LINK libs...): SOURCE defines LLVMFuzzerTestOneInput. With the fuzz preset it
# is a libFuzzer program; otherwise the corpus in fuzz/corpus/NAME is replayed through it as an ordinary test.
function(tidewell_fuzz_target name source)
  cmake_parse_arguments(ARG "" "" "LINK" ${ARGN})
  if(TIDEWELL_FUZZ)
    add_executable(${name} ${source})
    target_link_options(${name} PRIVATE -fsanitize=fuzzer)
  else()
    add_executable(${name} ${source} ${PROJECT_SOURCE_DIR}/fuzz/replay_main.cpp)
    add_test(NAME replay.${name} COMMAND ${name} ${PROJECT_SOURCE_DIR}/fuzz/corpus/${name})
    set_tests_properties(replay.${name} PROPERTIES TIMEOUT 120)
  endif()
  target_link_libraries(${name} PRIVATE tidewell_flags ${ARG_LINK})
endfunction()

# tidewell_benchmark(NAME SOURCES... LINK libs...): a program in bench/; never run by CTest.
function(tidewell_benchmark name)
  cmake_parse_arguments(ARG "QT" "" "SOURCES;LINK" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE tidewell_flags ${ARG_LINK})
  if(ARG_QT)
    set_target_properties(${name} PROPERTIES AUTOMOC ON)
  endif()
endfunction()
