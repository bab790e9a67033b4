# Installation in the GNU layout, man pages, and the Debian package (cpack -G DEB).
set(LM_PROGRAMS lm_asc)
foreach(prog lm_plot lm_mseed)
  if(TARGET ${prog})
    list(APPEND LM_PROGRAMS ${prog})
  endif()
endforeach()
install(TARGETS ${LM_PROGRAMS} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(PROGRAMS ${CMAKE_BINARY_DIR}/lm_batch DESTINATION ${CMAKE_INSTALL_BINDIR})

# Man pages are roff written by hand; the version is filled in and each page compressed as Debian wants.
set(LM_MAN_PAGES)
foreach(prog ${LM_PROGRAMS} lm_batch)
  set(page ${CMAKE_BINARY_DIR}/man/${prog}.1)
  configure_file(docs/man/${prog}.1.in ${page} @ONLY)
  add_custom_command(OUTPUT ${page}.gz COMMAND gzip -9nkf ${page} DEPENDS ${page} VERBATIM)
  list(APPEND LM_MAN_PAGES ${page}.gz)
endforeach()
add_custom_target(man_pages ALL DEPENDS ${LM_MAN_PAGES})
install(FILES ${LM_MAN_PAGES} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

set(CPACK_DEBIAN_PACKAGE_MAINTAINER "lm_asc developers <lm-asc@example.org>" CACHE STRING "Package maintainer")

# The changelog is kept in Debian's format and compressed like the pages.
set(LM_CHANGELOG ${CMAKE_BINARY_DIR}/doc/changelog)
configure_file(docs/changelog.in ${LM_CHANGELOG} @ONLY)
add_custom_command(OUTPUT ${LM_CHANGELOG}.gz COMMAND gzip -9nkf ${LM_CHANGELOG} DEPENDS ${LM_CHANGELOG} VERBATIM)
add_custom_target(changelog ALL DEPENDS ${LM_CHANGELOG}.gz)
install(FILES README.md examples/lmu.ini docs/copyright ${LM_CHANGELOG}.gz DESTINATION ${CMAKE_INSTALL_DOCDIR})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ${LM_PACKAGE_NAME})
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# lm_batch runs its jobs through GNU parallel.
set(CPACK_DEBIAN_PACKAGE_DEPENDS parallel)
# The description names the programs this build packages; shlibdeps adds the libraries they link
# (Cairo for lm_plot, libmseed and libxml2 for lm_mseed).
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "convert seismic recorder packet files into ASCII traces")
set(LM_DESCRIPTION "lm_asc reads files of 1024-byte packets written by field seismic recorders and
writes one ASCII trace file per channel of each event, with packet logs and
optional statistics. lm_batch converts a whole folder of such files in
parallel, resumably.")
if(TARGET lm_mseed)
  set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "convert seismic recorder packet files into ASCII traces and miniSEED")
  string(APPEND LM_DESCRIPTION "
lm_mseed exports the same packets as miniSEED records, flat or as an SDS
archive, with a StationXML document of the stations.")
endif()
if(TARGET lm_plot)
  string(APPEND LM_DESCRIPTION "
lm_plot draws quick-look pictures of the converted events.")
endif()
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "${LM_DESCRIPTION}")
include(CPack)
