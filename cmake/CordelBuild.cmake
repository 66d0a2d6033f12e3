# Compiler settings shared by every target of the project.

set(CORDEL_WARNING_FLAGS -Wall -Wextra -Wno-unused-parameter)
if(CORDEL_WARNINGS_AS_ERRORS)
  list(APPEND CORDEL_WARNING_FLAGS -Werror)
endif()

if(CORDEL_SANITIZE)
  list(JOIN CORDEL_SANITIZE "," _cordel_sanitizers)
  add_compile_options(-fsanitize=${_cordel_sanitizers} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${_cordel_sanitizers})
endif()

find_program(CORDEL_CCACHE ccache)
if(CORDEL_CCACHE AND NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_C_COMPILER_LAUNCHER ${CORDEL_CCACHE})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CORDEL_CCACHE})
endif()

# Applies the project's warnings to a target.
function(cordel_warnings target)
  target_compile_options(${target} PRIVATE ${CORDEL_WARNING_FLAGS})
endfunction()

# Reads "// <key>: a b c" lines from the head of a source file into a list.
# Test, benchmark and fuzz sources declare their labels and extra pkg-config modules that way,
# so that adding a source file never means editing a CMakeLists.txt.
function(cordel_read_directive file key out)
  file(STRINGS ${file} lines REGEX "^// ${key}:" LIMIT_COUNT 4)
  set(values "")
  foreach(line IN LISTS lines)
    string(REGEX REPLACE "^// ${key}:[ \t]*" "" line "${line}")
    string(REGEX REPLACE "[ \t]+" ";" line "${line}")
    list(APPEND values ${line})
  endforeach()
  set(${out} "${values}" PARENT_SCOPE)
endfunction()

# Links the pkg-config modules named by a "// pkg:" directive.
function(cordel_link_pkgs target file)
  cordel_read_directive(${file} "pkg" pkgs)
  if(pkgs)
    find_package(PkgConfig REQUIRED)
    foreach(pkg IN LISTS pkgs)
      string(MAKE_C_IDENTIFIER "CORDEL_PKG_${pkg}" var)
      if(NOT TARGET PkgConfig::${var})
        pkg_check_modules(${var} REQUIRED IMPORTED_TARGET GLOBAL ${pkg})
      endif()
      target_link_libraries(${target} PRIVATE PkgConfig::${var})
    endforeach()
  endif()
endfunction()
