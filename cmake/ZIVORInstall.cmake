# What `cmake --install` puts under the prefix: the shared and static
# libraries, the public headers (<zivor/ZIVOR.h>), the tools, the data
# directory (share/zivor/Data), zivor.pc for pkg-config and the CMake
# package that find_package(ZIVOR) reads.
include(CMakePackageConfigHelpers)

set(ZIVOR_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/ZIVOR)

install(TARGETS ZIVOR zivor_static EXPORT ZIVORTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${CMAKE_SOURCE_DIR}/include/zivor DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(TARGETS zivor zivor-data zivor-eval RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

# The files the library loads; the text sources, the new-word log and a
# user dictionary saved in the source tree stay behind.
install(DIRECTORY ${CMAKE_SOURCE_DIR}/Data DESTINATION ${ZIVOR_INSTALL_DATADIR}
        PATTERN source EXCLUDE
        PATTERN NewWord.lst EXCLUDE
        PATTERN UserDict.pdat EXCLUDE
        PATTERN *.log EXCLUDE)

install(EXPORT ZIVORTargets NAMESPACE ZIVOR:: DESTINATION ${ZIVOR_CMAKE_DIR})
configure_package_config_file(${CMAKE_SOURCE_DIR}/cmake/ZIVORConfig.cmake.in
  ${CMAKE_BINARY_DIR}/ZIVORConfig.cmake
  INSTALL_DESTINATION ${ZIVOR_CMAKE_DIR}
  PATH_VARS ZIVOR_INSTALL_DATADIR)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/ZIVORConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/ZIVORConfig.cmake ${CMAKE_BINARY_DIR}/ZIVORConfigVersion.cmake
        DESTINATION ${ZIVOR_CMAKE_DIR})

# pkg-config finds the prefix from where zivor.pc lies, so the installed tree
# may be moved.
set(ZIVOR_PC_TO_PREFIX "..")
string(REPLACE "/" ";" ZIVOR_LIBDIR_PARTS "${CMAKE_INSTALL_LIBDIR}")
foreach(part ${ZIVOR_LIBDIR_PARTS})
  string(APPEND ZIVOR_PC_TO_PREFIX "/..")
endforeach()
configure_file(${CMAKE_SOURCE_DIR}/cmake/zivor.pc.in ${CMAKE_BINARY_DIR}/zivor.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/zivor.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
