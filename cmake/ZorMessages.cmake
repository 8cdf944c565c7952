# Compiles a Windows-1252 message file into a message-table resource script;
# the script and its per-language .bin files land in the build tree.
function(zor_message_table out_var mc_file)
  get_filename_component(stem ${mc_file} NAME_WE)
  set(dir ${CMAKE_CURRENT_BINARY_DIR}/messages)
  set(rc ${dir}/${stem}.rc)
  add_custom_command(
    OUTPUT ${rc}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${dir}
    COMMAND ${CMAKE_MC_COMPILER} -C 1252 -U -h ${dir} -r ${dir} ${mc_file}
    DEPENDS ${mc_file}
    COMMENT "Message table ${stem}")
  set(${out_var} ${rc} PARENT_SCOPE)
endfunction()
