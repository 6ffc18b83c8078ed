# Debian packages, made by scripts/package.sh: the library, what it takes to build against it, and
# the program.
set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL library development program)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_PACKAGE_VENDOR "TNV SampleBench authors")
set(CPACK_PACKAGE_CONTACT "TNV SampleBench authors <authors@samplebench.invalid>")
set(CPACK_PACKAGE_HOMEPAGE_URL "https://samplebench.invalid/")
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(library_package libtnv-samplebench${PROJECT_VERSION_MAJOR})
set(exact_library "${library_package} (= ${PROJECT_VERSION}-1)")
# Lines of a package's description are cut at 80 characters by those who show them.
set(purpose "Projects of marked pictures, their augmentation, and complete\n\
training sets for object-detecting networks.")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${library_package})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "library that prepares training data for object detectors
${purpose}\nThis package has the shared library.")
# The dynamic linker has to learn of a new library, and packages that link it which one they need.
set(control ${PROJECT_BINARY_DIR}/packaging)
file(WRITE ${control}/triggers "activate-noawait ldconfig\n")
file(WRITE ${control}/shlibs
  "libTNV_SampleBenchNative ${PROJECT_VERSION_MAJOR} ${library_package} (>= ${PROJECT_VERSION})\n")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${control}/triggers ${control}/shlibs)

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libtnv-samplebench-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS ${exact_library})
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "library that prepares training data (development files)
${purpose}\nThis package has the headers and what CMake and pkg-config need.")

set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME samplebench)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS ${exact_library})
set(CPACK_COMPONENT_PROGRAM_DESCRIPTION "command-line tool that prepares training data
${purpose}\nThis package has the program, templates and task trees.")

# Each package says under which terms it comes, and what changed.
find_program(gzip gzip REQUIRED)
set(changelog ${PROJECT_BINARY_DIR}/packaging/changelog.Debian)
string(TIMESTAMP package_date "%a, %d %b %Y 00:00:00 +0000" UTC)
file(WRITE ${changelog} "samplebench (${PROJECT_VERSION}-1) stable; urgency=medium

  * Packaged from the sources, whose CHANGELOG.md tells what changed.

 -- ${CPACK_PACKAGE_CONTACT}  ${package_date}
")
set(manual ${PROJECT_BINARY_DIR}/packaging/samplebench.1)
add_custom_command(OUTPUT ${changelog}.gz COMMAND ${gzip} -9nkf ${changelog} VERBATIM)
set(made_manual ${PROJECT_BINARY_DIR}/texts/samplebench.1)
add_custom_command(OUTPUT ${manual}.gz DEPENDS ${made_manual}
  COMMAND ${CMAKE_COMMAND} -E copy ${made_manual} ${manual}
  COMMAND ${gzip} -9nf ${manual} VERBATIM)
set_source_files_properties(${made_manual} PROPERTIES GENERATED TRUE)
add_custom_target(tnv_packed_texts ALL DEPENDS ${changelog}.gz ${manual}.gz)
add_dependencies(tnv_packed_texts samplebench_texts)
install(FILES ${manual}.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT program)
set(packages library ${library_package} development libtnv-samplebench-dev program samplebench)
while(packages)
  list(POP_FRONT packages component package)
  install(FILES ${PROJECT_SOURCE_DIR}/LICENSE RENAME copyright COMPONENT ${component}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} EXCLUDE_FROM_ALL)
  install(FILES ${changelog}.gz COMPONENT ${component}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} EXCLUDE_FROM_ALL)
endwhile()

include(CPack)
