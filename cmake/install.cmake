# What `cmake --install` puts where. Programs of the project that are not part of a build are left out.

include(GNUInstallDirs)
set(BASH_COMPLETION_DIR ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)

# orva_install_extras(PROGRAM): its manual page and its completion.
function(orva_install_extras program)
  set(page ${PROJECT_SOURCE_DIR}/docs/man/${program}.1)
  if(EXISTS ${page})
    install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  endif()
  # Completions are looked for by the name of the command.
  install(FILES ${PROJECT_SOURCE_DIR}/tools/completion/orva DESTINATION ${BASH_COMPLETION_DIR}
          RENAME ${program})
endfunction()

foreach(program orva orva-check)
  if(TARGET ${program})
    install(TARGETS ${program} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
    orva_install_extras(${program})
  endif()
endforeach()

# A Python program with its modules beside it: it finds them through the link.
if(EXISTS ${PROJECT_SOURCE_DIR}/src/import/orva-import)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/src/import DESTINATION ${CMAKE_INSTALL_DATADIR}/orva
          USE_SOURCE_PERMISSIONS PATTERN __pycache__ EXCLUDE)
  file(RELATIVE_PATH program ${CMAKE_INSTALL_FULL_BINDIR}
       ${CMAKE_INSTALL_FULL_DATADIR}/orva/import/orva-import)
  # One link for where it is installed, and one beside the programs of the build.
  file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/install)
  file(CREATE_LINK ${program} ${PROJECT_BINARY_DIR}/install/orva-import SYMBOLIC)
  install(FILES ${PROJECT_BINARY_DIR}/install/orva-import DESTINATION ${CMAKE_INSTALL_BINDIR})
  file(CREATE_LINK ${PROJECT_SOURCE_DIR}/src/import/orva-import ${PROJECT_BINARY_DIR}/orva-import SYMBOLIC)
  orva_install_extras(orva-import)
endif()

# The README and the pages refer to each other and to the examples as they do in the project.
install(FILES README.md CHANGELOG.md LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR}
        FILES_MATCHING PATTERN *.md PATTERN man EXCLUDE)
# What a workflow may have left where it was tried is no part of the example.
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} USE_SOURCE_PERMISSIONS
        PATTERN .snakemake EXCLUDE PATTERN studies EXCLUDE PATTERN results EXCLUDE)
install(FILES docs/orva.rng DESTINATION ${CMAKE_INSTALL_DATADIR}/orva)
