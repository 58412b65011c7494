# What every target of the project is compiled with.
function(arch_cfg_target_options target)
  target_compile_features(${target} PRIVATE cxx_std_20 c_std_11)
  set_target_properties(${target} PROPERTIES
    CXX_EXTENSIONS OFF
    POSITION_INDEPENDENT_CODE ON
    CXX_VISIBILITY_PRESET hidden
    C_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  target_compile_definitions(${target} PRIVATE _GNU_SOURCE)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wformat=2 -Wconversion
    # No folder of the machine that built it stands in what is installed.
    -fdebug-prefix-map=${PROJECT_SOURCE_DIR}=. -fmacro-prefix-map=${PROJECT_SOURCE_DIR}=.
    $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>
    $<$<BOOL:${ARCH_CFG_WERROR}>:-Werror>)
  if(ARCH_CFG_HARDEN)
    target_compile_options(${target} PRIVATE
      -fstack-protector-strong
      $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>)
    target_link_options(${target} PRIVATE -Wl,-z,relro -Wl,-z,now)
  endif()
endfunction()
