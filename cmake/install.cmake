# An installation is the tree of the build folder, copied: nothing is laid out twice.
include(GNUInstallDirs)
install(DIRECTORY ${KORVANE_TREE}/ DESTINATION . USE_SOURCE_PERMISSIONS)
