# Compile settings shared by every target, and the two helpers that make floors and tests.

add_library(zelkor_flags INTERFACE)
target_compile_features(zelkor_flags INTERFACE cxx_std_20)
target_include_directories(zelkor_flags INTERFACE ${CMAKE_SOURCE_DIR})
target_compile_options(zelkor_flags INTERFACE
  $<$<CXX_COMPILER_ID:GNU,Clang>:-Wall -Wextra -Wpedantic>
  $<$<CXX_COMPILER_ID:GNU>:-Wshadow=local>
  $<$<CXX_COMPILER_ID:GNU,Clang>:-Wnon-virtual-dtor -Woverloaded-virtual -Werror>
  $<$<CXX_COMPILER_ID:MSVC>:/W4 /WX /utf-8>)
target_compile_definitions(zelkor_flags INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING
  ZELKOR_VERSION="${PROJECT_VERSION}")
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")   # its version 12 takes "+" of strings for overlapping copies when it optimises
  target_compile_options(zelkor_flags INTERFACE -Wno-restrict)
endif()
if(ZELKOR_SANITIZE)
  target_compile_options(zelkor_flags INTERFACE
    -fsanitize=${ZELKOR_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(zelkor_flags INTERFACE -fsanitize=${ZELKOR_SANITIZE})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")   # it sees ghosts inside std::regex and the like under sanitizers
    target_compile_options(zelkor_flags INTERFACE -Wno-maybe-uninitialized)
  endif()
endif()
if(ZELKOR_FUZZ)
  target_compile_options(zelkor_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()

find_program(ZELKOR_MOLD mold)
if(ZELKOR_MOLD AND NOT MSVC)
  target_link_options(zelkor_flags INTERFACE -fuse-ld=mold)
endif()
find_program(ZELKOR_CCACHE ccache)
if(ZELKOR_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${CMAKE_SOURCE_DIR}
      CCACHE_NOHASHDIR=1 CCACHE_SLOPPINESS=pch_defines,time_macros ${ZELKOR_CCACHE})
endif()

# Headers compiled once for each target: half of the time that a file takes.
function(zelkor_precompile target header)
  if(ZELKOR_PRECOMPILE)
    target_precompile_headers(${target} PRIVATE ${CMAKE_SOURCE_DIR}/cmake/${header})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
      # The first is for ccache. Version 12 sees ghosts in "+" of strings whose header was precompiled; the release preset warns.
      target_compile_options(${target} PRIVATE -fpch-preprocess -Wno-array-bounds -Wno-stringop-overflow)
    endif()
  endif()
endfunction()

# With ZELKOR_UNITY ten sources are compiled as one: names in unnamed namespaces must then differ within a floor. Sources of the
# engine, which read no large headers, and those of app/start, which share such names, stay by themselves.
function(zelkor_unity target)
  if(ZELKOR_UNITY AND NOT target STREQUAL "zelkor_text")
    set_source_files_properties(${ARGN} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 10)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")   # a class of a source may hold types of that source's unnamed namespace
      target_compile_options(${target} PRIVATE -Wno-subobject-linkage)
    endif()
  endif()
endfunction()

# zelkor_floor(NAME LIBS ...): the library of the folder NAME, made of every .cpp in it.
function(zelkor_floor name)
  cmake_parse_arguments(F "" "" "LIBS" ${ARGN})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/${name}/*.cpp
       ${CMAKE_SOURCE_DIR}/${name}/*.h ${CMAKE_SOURCE_DIR}/${name}/*.qrc)
  list(FILTER sources EXCLUDE REGEX "/app/main\\.cpp$")
  if(NOT sources)
    return()
  endif()
  add_library(zelkor_${name} STATIC ${sources})
  foreach(lib ${F_LIBS})   # a floor that has no sources yet is no target
    if(lib MATCHES "^zelkor_" AND NOT TARGET ${lib})
      list(REMOVE_ITEM F_LIBS ${lib})
    endif()
  endforeach()
  target_link_libraries(zelkor_${name} PUBLIC ${F_LIBS} PRIVATE zelkor_flags)
  set(apart ${sources})
  list(FILTER apart INCLUDE REGEX "/app/start/")
  zelkor_unity(zelkor_${name} ${apart})
  if(name STREQUAL "text")
    set_target_properties(zelkor_text PROPERTIES AUTOMOC OFF AUTORCC OFF)
    zelkor_precompile(zelkor_text PrecompiledStd.h)
  else()
    zelkor_precompile(zelkor_${name} Precompiled.h)
  endif()
endfunction()

# For every test under sanitizers. The tool kit's own library frees in its file dialogs what it took in another way; faults of
# that kind in our code are the compiler's to find.
set(ZELKOR_SANITIZER_ENVIRONMENT "ASAN_OPTIONS=alloc_dealloc_mismatch=0;LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tests/leaks.txt:print_suppressions=0")

# zelkor_test(FOLDER LIBS ...): one test program of every .cpp in tests/FOLDER, one CTest entry for each
# file: the entry runs the suites whose names begin with the file's name (Foo.cpp: TEST(Foo, ...), TEST(FooBar, ...)).
# Programs above the engine get tests/support/main.cpp, which makes the QApplication.
function(zelkor_test folder)
  cmake_parse_arguments(T "" "" "LIBS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/tests/${folder}/*.cpp)
  if(NOT sources)
    return()
  endif()
  if(NOT folder STREQUAL "text")
    list(APPEND sources ${CMAKE_SOURCE_DIR}/tests/support/main.cpp)
  endif()
  set(target test_${folder})
  add_executable(${target} ${sources})
  target_link_libraries(${target} PRIVATE ${T_LIBS} zelkor_flags GTest::gtest GTest::gmock)
  if(folder STREQUAL "text")
    zelkor_precompile(${target} PrecompiledStd.h)
  else()
    zelkor_precompile(${target} Precompiled.h)
  endif()
  foreach(source ${sources})
    get_filename_component(suite ${source} NAME_WE)
    if(suite STREQUAL "main")
      continue()
    endif()
    add_test(NAME ${folder}.${suite} COMMAND ${target} --gtest_filter=${suite}*.*:*/${suite}*.*)
    set_tests_properties(${folder}.${suite} PROPERTIES TIMEOUT 900 LABELS ${folder}
      ENVIRONMENT "QT_QPA_PLATFORM=offscreen;ZELKOR_SOURCE=${CMAKE_SOURCE_DIR};ZELKOR_BIN=${CMAKE_RUNTIME_OUTPUT_DIRECTORY};${ZELKOR_SANITIZER_ENVIRONMENT}"
      FAIL_REGULAR_EXPRESSION "Running 0 tests" SKIP_RETURN_CODE 77)
  endforeach()
endfunction()
