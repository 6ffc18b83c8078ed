# Language level, warnings and sanitizers that every target of the project is built with.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)

add_library(tnv_options INTERFACE)
target_compile_options(tnv_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Wold-style-cast
  $<$<BOOL:${TNV_WARNINGS_AS_ERRORS}>:-Werror>)
if(TNV_SANITIZE)
  target_compile_options(tnv_options INTERFACE
    -fsanitize=${TNV_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all
    # Instrumented code makes GCC see uninitialised values in the standard library; the other builds
    # keep this warning.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  target_compile_definitions(tnv_options INTERFACE TNV_SANITIZED)
  target_link_options(tnv_options INTERFACE -fsanitize=${TNV_SANITIZE})
endif()

# What a release carries against the use of errors that slipped through. Position independent programs
# come from CMAKE_POSITION_INDEPENDENT_CODE, which counts for linking once this was asked.
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)
if(NOT TNV_SANITIZE AND NOT MSVC)
  target_compile_options(tnv_options INTERFACE
    $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-fstack-protector-strong;-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>)
  target_link_options(tnv_options INTERFACE LINKER:-z,relro,-z,now)
endif()
