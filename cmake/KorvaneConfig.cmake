# find_package(Korvane) for add-ons: Korvane::MekCore (the toolkit), Korvane::MekRes (messages), Korvane::Host, Korvane::Platform;
# korvane_add_on(<target> SOURCES...) makes a .kvx that finds them in the installed tree.
get_filename_component(KORVANE_ROOT "${CMAKE_CURRENT_LIST_DIR}/../../.." ABSOLUTE)

function(_korvane_import name file)
  if(TARGET Korvane::${name})
    return()
  endif()
  add_library(Korvane::${name} SHARED IMPORTED)
  set_target_properties(Korvane::${name} PROPERTIES
    IMPORTED_LOCATION "${KORVANE_ROOT}/${file}"
    INTERFACE_INCLUDE_DIRECTORIES "${KORVANE_ROOT}/include;${KORVANE_ROOT}/include/korvane"
    INTERFACE_COMPILE_FEATURES cxx_std_20)
endfunction()

_korvane_import(Platform lib/libkvplatform.so)
_korvane_import(Host lib/libkvhost.so)
_korvane_import(MekRes lib/libMekRes.so)
_korvane_import(MekCore Professional/KVX8x64/MekCore.kvx)
target_link_libraries(Korvane::Host INTERFACE Korvane::Platform)
target_link_libraries(Korvane::MekRes INTERFACE Korvane::Platform)
target_link_libraries(Korvane::MekCore INTERFACE Korvane::MekRes Korvane::Host)

function(korvane_add_on target)
  add_library(${target} MODULE ${ARGN})
  target_link_libraries(${target} PRIVATE Korvane::MekCore)
  set_target_properties(${target} PROPERTIES PREFIX "" SUFFIX ".kvx" CXX_VISIBILITY_PRESET hidden
    BUILD_RPATH "${KORVANE_ROOT}/lib;${KORVANE_ROOT}/Professional/KVX8x64" INSTALL_RPATH "$ORIGIN/../../lib;$ORIGIN")
endfunction()
