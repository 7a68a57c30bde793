# Runs before a Debian package is put together, and does in the folder that becomes it what Debian's rules ask for.
set(root "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/ALL_COMPONENTS_IN_ONE/usr/share")

# Manual pages and changelogs are compressed.
file(GLOB documents "${root}/man/man1/*.1" "${root}/doc/quillmere/changelog*")
if(NOT documents)
    message(FATAL_ERROR "No documents in ${root}")
endif()
execute_process(COMMAND gzip --best --no-name ${documents} COMMAND_ERROR_IS_FATAL ANY)

# Debian's zsh looks for what packages bring in a folder of its own.
file(MAKE_DIRECTORY "${root}/zsh/vendor-completions")
file(RENAME "${root}/zsh/site-functions/_quillmere-cli" "${root}/zsh/vendor-completions/_quillmere-cli")
file(REMOVE_RECURSE "${root}/zsh/site-functions")
