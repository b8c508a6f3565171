# cpack -G DEB: one Debian package for each component.
set(CPACK_PACKAGE_NAME cfa-cmodel)
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_CONTACT "cfa_cmodel maintainers <maintainers@cfa-cmodel.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "bit-exact model of a colour-filter-array block")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL tools library development python)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

# Component, package name, section, dependencies beyond those that the libraries name, description.
function(cfa_package component name section depends description)
  string(TOUPPER "${component}" COMPONENT)
  set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_NAME "${name}" PARENT_SCOPE)
  set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_SECTION "${section}" PARENT_SCOPE)
  set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_DEPENDS "${depends}" PARENT_SCOPE)
  set(CPACK_COMPONENT_${COMPONENT}_DESCRIPTION "${description}" PARENT_SCOPE)
  # What every package carries: its copyright and its history.
  set(folder "${PROJECT_BINARY_DIR}/packages/${name}")
  file(CONFIGURE OUTPUT "${folder}/changelog" @ONLY CONTENT
    "cfa-cmodel (@PROJECT_VERSION@) unstable; urgency=medium\n\n  * See CHANGELOG.md of the sources.\n\n -- @CPACK_PACKAGE_CONTACT@  Thu, 01 Jan 2026 00:00:00 +0000\n")
  install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" RENAME copyright DESTINATION share/doc/${name} COMPONENT ${component}
    EXCLUDE_FROM_ALL)
  install(CODE "execute_process(COMMAND gzip -9nc \"${folder}/changelog\" OUTPUT_FILE \"${folder}/changelog.gz\")
    file(INSTALL \"${folder}/changelog.gz\" DESTINATION \"\${CMAKE_INSTALL_PREFIX}/share/doc/${name}\")"
    COMPONENT ${component} EXCLUDE_FROM_ALL)
endfunction()

cfa_package(tools cfa-cmodel graphics "" "The ten-argument tool and its companion program: charts, registers, comparison,
 reports.")
cfa_package(library libcfa-block1 libs "" "The block behind a C header: the shared library.")
cfa_package(development libcfa-block-dev libdevel "libcfa-block1 (= ${PROJECT_VERSION}), libinih-dev"
  "The block behind a C header and as C++ functions: headers, static
 libraries, files for CMake and pkg-config.")
cfa_package(python python3-cfa-cmodel python "python3 (>= 3.10), python3-numpy, libcfa-block1 (= ${PROJECT_VERSION})"
  "The block on numpy arrays, with its registers and the planes between its
 stages.")
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)

file(WRITE "${PROJECT_BINARY_DIR}/packages/triggers" "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA "${PROJECT_BINARY_DIR}/packages/triggers")
# Programs of the C++ functions must wrap as the library does.
file(WRITE "${PROJECT_BINARY_DIR}/packages/overrides" "libcfa-block-dev: pkg-config-bad-directive\n")
install(FILES "${PROJECT_BINARY_DIR}/packages/overrides" RENAME libcfa-block-dev DESTINATION share/lintian/overrides
  COMPONENT development EXCLUDE_FROM_ALL)
include(CPack)
