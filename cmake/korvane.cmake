# What every folder of the house shares: compiler settings, the tree that is run in place,
# and the two functions by which a folder and a library are declared.

# The installed tree is laid out in the build folder as well, so that everything runs in place.
set(KORVANE_TREE ${CMAKE_BINARY_DIR}/tree)
set(KORVANE_MODULE_DIR Professional/KVX8x64)

set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")

add_library(korvane_settings INTERFACE)
target_compile_options(korvane_settings INTERFACE
  -Wall -Wextra -Wconversion -Wshadow -Werror
  -ffp-contract=off                 # the same results on every machine
  -fno-semantic-interposition
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)   # false positives of g++ 12 in its own std::string
target_include_directories(korvane_settings INTERFACE ${CMAKE_SOURCE_DIR} ${CMAKE_SOURCE_DIR}/include)
if(KORVANE_SANITIZE)
  # g++ 12 reports false "maybe uninitialized" positives under the sanitizers' instrumentation.
  target_compile_options(korvane_settings INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer -O1
    -Wno-maybe-uninitialized)
  target_link_options(korvane_settings INTERFACE -fsanitize=address,undefined)
endif()
if(KORVANE_FUZZ)
  target_compile_options(korvane_settings INTERFACE -fsanitize=fuzzer-no-link,address,undefined)
  target_link_options(korvane_settings INTERFACE -fsanitize=address,undefined)
endif()

# korvane_folder(<target> [DEPENDS <folder targets>...] [LIBS <libraries>...])
# One folder of the house: all its sources as one object library. DEPENDS names the folders whose
# headers it includes; scripts/check_includes.py reads the same list.
function(korvane_folder target)
  cmake_parse_arguments(arg "" "" "DEPENDS;LIBS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS *.cpp internal/*.cpp cli/*.cpp)
  if(NOT sources)
    add_library(${target} INTERFACE)
    target_link_libraries(${target} INTERFACE korvane_settings ${arg_LIBS})
  else()
    add_library(${target} OBJECT ${sources})
    target_link_libraries(${target} PUBLIC korvane_settings ${arg_LIBS})
  endif()
endfunction()

# korvane_library(<target> OUTPUT <name> FOLDERS <folder targets>... [LIBS <libraries>...] [MODULE])
# A shared library made of folders. With MODULE it is a .kvx in the product's module folder.
function(korvane_library target)
  cmake_parse_arguments(arg "MODULE" "OUTPUT" "FOLDERS;LIBS" ${ARGN})
  set(objects)
  foreach(folder IN LISTS arg_FOLDERS)
    get_target_property(type ${folder} TYPE)
    if(type STREQUAL "OBJECT_LIBRARY")
      list(APPEND objects $<TARGET_OBJECTS:${folder}>)
    endif()
  endforeach()
  add_library(${target} SHARED ${objects})
  target_link_libraries(${target} PUBLIC korvane_settings ${arg_LIBS})
  target_link_options(${target} PRIVATE -Wl,-Bsymbolic-functions)
  if(NOT KORVANE_FUZZ)
    # clang leaves the sanitizers' own names to the executable.
    target_link_options(${target} PRIVATE -Wl,--no-undefined)
  endif()
  set_target_properties(${target} PROPERTIES LINKER_LANGUAGE CXX OUTPUT_NAME ${arg_OUTPUT})
  if(arg_MODULE)
    set_target_properties(${target} PROPERTIES PREFIX "" SUFFIX ".kvx"
      LIBRARY_OUTPUT_DIRECTORY ${KORVANE_TREE}/${KORVANE_MODULE_DIR}
      BUILD_RPATH "$ORIGIN/../../lib;$ORIGIN" INSTALL_RPATH "$ORIGIN/../../lib;$ORIGIN"
      BUILD_WITH_INSTALL_RPATH ON)
  else()
    set_target_properties(${target} PROPERTIES
      LIBRARY_OUTPUT_DIRECTORY ${KORVANE_TREE}/lib
      INSTALL_RPATH "$ORIGIN" BUILD_WITH_INSTALL_RPATH ON)
  endif()
endfunction()

# korvane_test(<area> [LIBS ...] [FOLDERS <folder targets>...] [DIRECTORY <folder>])
# One test executable from tests/<area>/*.cpp. FOLDERS are compiled in, so that what they hide can be tested; DIRECTORY says
# where the executable lies, for code that finds its files from there.
function(korvane_test area)
  cmake_parse_arguments(arg "" "DIRECTORY" "LIBS;FOLDERS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/tests/${area}/*.cpp)
  if(NOT sources)
    return()
  endif()
  if(NOT arg_DIRECTORY)
    set(arg_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
  endif()
  foreach(folder IN LISTS arg_FOLDERS)
    list(APPEND sources $<TARGET_OBJECTS:${folder}>)
  endforeach()
  add_executable(test_${area} ${sources})
  target_link_libraries(test_${area} PRIVATE korvane_settings ${arg_LIBS} GTest::gtest_main)
  target_compile_definitions(test_${area} PRIVATE
    KORVANE_TEST_DATA="${CMAKE_SOURCE_DIR}/tests/${area}"
    KORVANE_EXAMPLES="${CMAKE_SOURCE_DIR}/examples"
    KORVANE_TREE_DIR="${KORVANE_TREE}")
  set_target_properties(test_${area} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${arg_DIRECTORY}
    BUILD_RPATH "${KORVANE_TREE}/lib;${KORVANE_TREE}/${KORVANE_MODULE_DIR}")
  add_test(NAME ${area} COMMAND test_${area} --gtest_brief=1)
  set_tests_properties(${area} PROPERTIES TIMEOUT 900)
endfunction()
