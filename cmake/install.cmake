# What `cmake --install` adds to the programs: library, headers, pkg-config file, man pages, completion, data.
# Components: tools, library (the shared one), development, python.
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME development)
install(TARGETS cfa_block cfa_model cfa_common cfa_flags EXPORT cfa_cmodel
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT library NAMELINK_COMPONENT development)
install(FILES block/cfa_block.h DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")

# find_package(cfa_cmodel) gives the targets cfa_cmodel::cfa_block (C) and cfa_cmodel::cfa_model (the C++ functions).
include(CMakePackageConfigHelpers)
set(cmake_folder "${CMAKE_INSTALL_LIBDIR}/cmake/cfa_cmodel")
install(EXPORT cfa_cmodel NAMESPACE cfa_cmodel:: DESTINATION "${cmake_folder}" FILE cfa_cmodelConfig.cmake)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/cfa_cmodelConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/cfa_cmodelConfigVersion.cmake" DESTINATION "${cmake_folder}")

# Installed headers lie side by side and find each other by their names: #include "cfa_hw.h".
foreach(header
    log/log.h
    cmodel/common/color_id.h cmodel/common/curve.h cmodel/common/frame.h cmodel/common/image_file.h
    cmodel/common/ini_file.h cmodel/common/ppm.h cmodel/common/register_block.h
    cmodel/cfa/src/cfa_hw.h cmodel/cfa/src/stages.h
    cmodel/cfa/src/kit/debug_image.h cmodel/cfa/src/kit/fixed_point.h cmodel/cfa/src/kit/window.h
    cmodel/cfa/src/reg_parse/cfa_reg.h
    cmodel/cfa/src/reg_parse/cfa_reg_hw_def.inc cmodel/cfa/src/reg_parse/cfa_reg_sw_def.inc
    cmodel/cmodel_top/src/reg_parse/cmodel_top_reg.h
    cmodel/cmodel_top/src/reg_parse/cmodel_top_reg_hw_def.inc
    cmodel/cmodel_top/src/reg_parse/cmodel_top_reg_sw_def.inc)
  file(READ "${PROJECT_SOURCE_DIR}/${header}" text)
  string(REGEX REPLACE "#include \"(cmodel|log)/([a-z_]+/)*" "#include \"" text "${text}")
  get_filename_component(name "${header}" NAME)
  file(CONFIGURE OUTPUT "${PROJECT_BINARY_DIR}/include/${name}" CONTENT "${text}" @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/include/${name}" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/cfa_cmodel")
  set_property(DIRECTORY "${PROJECT_SOURCE_DIR}" APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/${header}")
endforeach()

# The pkg-config file finds the rest from its own place: an installed tree may be moved.
set(pc_folder "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
file(RELATIVE_PATH prefix_from_pc "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
foreach(kind LIBDIR INCLUDEDIR)
  string(TOLOWER "pc_${kind}" variable)
  if(IS_ABSOLUTE "${CMAKE_INSTALL_${kind}}")
    set(${variable} "${CMAKE_INSTALL_${kind}}")
  else()
    set(${variable} "\${prefix}/${CMAKE_INSTALL_${kind}}")
  endif()
endforeach()
foreach(name cfa_block cfa_cmodel)
  configure_file("${PROJECT_SOURCE_DIR}/cmake/${name}.pc.in" "${PROJECT_BINARY_DIR}/${name}.pc" @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/${name}.pc" DESTINATION "${pc_folder}")
endforeach()

# A manual page is installed compressed, the same bytes each time.
function(cfa_install_page page)
  execute_process(COMMAND gzip -9nc "${PROJECT_SOURCE_DIR}/docs/man/${page}" OUTPUT_FILE "${PROJECT_BINARY_DIR}/${page}.gz")
  install(FILES "${PROJECT_BINARY_DIR}/${page}.gz" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT tools)
endfunction()
cfa_install_page(cfa_cmodel.1)
install(FILES samples/cfa.ini samples/cmodel_top.ini DESTINATION "${CMAKE_INSTALL_DATADIR}/cfa_cmodel/samples" COMPONENT tools)
install(FILES examples/block.c examples/testbench.cpp DESTINATION "${CMAKE_INSTALL_DATADIR}/cfa_cmodel/examples")
install(FILES docs/registers.md DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT tools)
if(CFA_BUILD_TOOLS)
  cfa_install_page(cfatool.1)
  install(FILES tools/cfatool/cfatool.bash RENAME cfatool
    DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" COMPONENT tools)
  install(FILES tests/data/conformance.sha256 DESTINATION "${CMAKE_INSTALL_DATADIR}/cfa_cmodel" COMPONENT tools)
endif()

# The Python package is the same for every Python 3; it finds the library by its SONAME.
install(DIRECTORY bindings/python/cfa_cmodel DESTINATION lib/python3/dist-packages COMPONENT python
  FILES_MATCHING PATTERN "*.py" PATTERN "py.typed")

# The SystemVerilog package and its testbench.
install(DIRECTORY bindings/systemverilog DESTINATION "${CMAKE_INSTALL_DATADIR}/cfa_cmodel" USE_SOURCE_PERMISSIONS)
install(DIRECTORY examples/verilator DESTINATION "${CMAKE_INSTALL_DATADIR}/cfa_cmodel/examples" USE_SOURCE_PERMISSIONS)
