# What cmake --install and script/package bring to a system: programs, their pages and completions, scenarios. Of
# the texts beside the pages all but one need a checkout. The tree may be moved: nothing in it knows where it is. The
# target `installed` builds all of it.
include(GNUInstallDirs)
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)  # tests aren't built for it

# Folders that all may enter, first: CMake's own modes are cut by the umask of who installs. What is there stays as it is.
set(folders ${CMAKE_INSTALL_BINDIR} ${CMAKE_INSTALL_DOCDIR} ${CMAKE_INSTALL_MANDIR}/man1 ${CMAKE_INSTALL_MANDIR}/man5
            ${CMAKE_INSTALL_DATADIR}/rbk/scenarios ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
            ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)
install(CODE "set(folders \"${folders}\")")
install(CODE [[
foreach(folder ${folders})
  cmake_path(ABSOLUTE_PATH folder BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX})
  get_filename_component(folder "$ENV{DESTDIR}${folder}" ABSOLUTE)
  set(missing)
  while(NOT EXISTS ${folder})
    list(APPEND missing ${folder})
    cmake_path(GET folder PARENT_PATH folder)
  endwhile()
  if(missing)
    file(MAKE_DIRECTORY ${missing})
    file(CHMOD ${missing} DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ
                                                WORLD_EXECUTE)
  endif()
endforeach()
]])

set(programs rbk rbk-modem rbk-prop)
if(TARGET rbk-trace)
  list(APPEND programs rbk-trace)
endif()
install(TARGETS ${programs} RUNTIME)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/scenarios DESTINATION ${CMAKE_INSTALL_DATADIR}/rbk OPTIONAL
        FILES_MATCHING PATTERN *.toml)
install(FILES ${PROJECT_SOURCE_DIR}/docs/wire.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
set(made)

# ---- Man pages, where scdoc is: docs/man/NAME.SECTION.scd ----

find_program(RBK_SCDOC scdoc)
if(RBK_SCDOC)
  file(GLOB pages CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/man/*.scd)
  foreach(source ${pages})
    cmake_path(GET source STEM LAST_ONLY page)
    string(REGEX REPLACE ".*\\." "man" folder ${page})
    set(out ${PROJECT_BINARY_DIR}/share/man/${folder}/${page}.gz)
    file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/share/man/${folder})
    add_custom_command(OUTPUT ${out} DEPENDS ${source} ${PROJECT_SOURCE_DIR}/cmake/man_page VERBATIM
                       COMMAND ${PROJECT_SOURCE_DIR}/cmake/man_page ${RBK_SCDOC} ${source} ${out})
    list(APPEND made ${out})
    install(FILES ${out} DESTINATION ${CMAKE_INSTALL_MANDIR}/${folder})
  endforeach()
endif()

# ---- Completion: what the programs say of themselves, put into a frame for each shell ----

set(paths ${programs})
list(TRANSFORM paths REPLACE "(.+)" "$<TARGET_FILE:\\1>")
list(JOIN CMAKE_CROSSCOMPILING_EMULATOR " " emulator)
function(rbk_completion template out)
  cmake_path(GET out PARENT_PATH folder)
  file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/${folder})
  add_custom_command(OUTPUT ${PROJECT_BINARY_DIR}/${out} VERBATIM
                     COMMAND ${PROJECT_SOURCE_DIR}/completion/generate ${PROJECT_SOURCE_DIR}/completion/${template}
                             ${PROJECT_BINARY_DIR}/${out} "${emulator}" ${paths}
                     DEPENDS ${programs} completion/generate completion/words completion/${template})
  set(made ${made} ${PROJECT_BINARY_DIR}/${out} PARENT_SCOPE)
endfunction()
rbk_completion(rbk.bash.in share/bash-completion/completions/rbk)
rbk_completion(_rbk.in share/zsh/vendor-completions/_rbk)
# bash looks for a file of each program's name.
foreach(program ${programs})
  install(FILES ${PROJECT_BINARY_DIR}/share/bash-completion/completions/rbk RENAME ${program}
          DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
endforeach()
install(FILES ${PROJECT_BINARY_DIR}/share/zsh/vendor-completions/_rbk
        DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)

add_custom_target(installed ALL DEPENDS ${programs} ${made})

# ---- The package ----

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME rbk)
set(CPACK_PACKAGE_CONTACT "rbk developers <rbk@example.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "command-line shell for a phone's cellular modem, with a simulated one")
set(CPACK_PACKAGE_DESCRIPTION "\
rbk does one thing a run: it reads or writes an NV item or an EFS file,
asks for the radio's figures, switches cards and configurations, scans
networks, or sends raw bytes over QMI, diag or AT, and prints what came
back.
.
Without a phone it works against a simulated modem, whose state, answers
and faults a text file describes. rbk-modem serves that modem to many
clients, also to those that others wrote. rbk-trace reads what rbk wrote
down of a talk with a modem: as lines, as a page for a browser, or as the
scenario that repeats it. rbk-prop looks after the properties that rbk
reads.")
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION comm)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
include(CPack)
