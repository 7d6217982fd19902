# Targets of the library: one object library per processor class for the kernels, one for everything
# that runs on any processor, and from these the shared library (the product) and a static one that
# tests and benchmarks link to reach the internals.

add_library(orba_options INTERFACE)
target_include_directories(orba_options INTERFACE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
# Contraction is off everywhere: a fused operation is one that the source spells out.
target_compile_options(orba_options INTERFACE
  -ffp-contract=off -fvisibility=hidden -Wall -Wextra -Wshadow -Wconversion -Wno-sign-conversion
  $<$<BOOL:${ORBA_WERROR}>:-Werror>)

# A class uses only some of the helpers of a source. g++ 12 takes the deliberately undefined operands
# inside its own intrinsics for mistakes. Linked behind orba_options, as the last word counts.
add_library(orba_class_warnings INTERFACE)
target_compile_options(orba_class_warnings INTERFACE
  -Wno-unused-function $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized -Wno-uninitialized>
  $<$<CXX_COMPILER_ID:Clang>:-Wno-unused-const-variable>)

# The processor classes that have a build, and the instruction set of each.
set(classes_header ${PROJECT_SOURCE_DIR}/services/processor_classes.h)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${classes_header})
file(READ ${classes_header} ORBA_KERNEL_CLASSES)
string(REGEX MATCHALL "\n +LIVE\\([0-9]+" ORBA_KERNEL_CLASSES "${ORBA_KERNEL_CLASSES}")
list(TRANSFORM ORBA_KERNEL_CLASSES REPLACE "[^0-9]" "")
set(ORBA_CLASS_0_FLAGS -march=x86-64)
set(ORBA_CLASS_1_FLAGS -march=x86-64)
set(ORBA_CLASS_2_FLAGS -march=x86-64 -msse4.2 -mpopcnt)
set(ORBA_CLASS_3_FLAGS -march=x86-64 -mavx2 -mfma -mbmi -mlzcnt -mpclmul -mpopcnt)
set(ORBA_CLASS_5_FLAGS ${ORBA_CLASS_3_FLAGS} -mavx512f -mavx512dq -mavx512bw -mavx512vl
                       -mprefer-vector-width=512)

# Compiles the same sources once per processor class into object libraries PREFIX_c0 ... PREFIX_c5.
# Those in a folder named baseline serve all classes: they are compiled for class 0 alone.
function(orba_add_class_objects prefix)
  foreach(class IN LISTS ORBA_KERNEL_CLASSES)
    set(target ${prefix}_c${class})
    set(sources ${ARGN})
    if(NOT class EQUAL 0)
      list(FILTER sources EXCLUDE REGEX "/baseline/")
    endif()
    add_library(${target} OBJECT ${sources})
    target_link_libraries(${target} PRIVATE orba_options orba_class_warnings)
    target_compile_definitions(${target} PRIVATE ORBA_CLASS=${class} ORBA_CLASS_NAMESPACE=c${class})
    target_compile_options(${target} PRIVATE ${ORBA_CLASS_${class}_FLAGS}
      -falign-loops=32 $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti -fno-math-errno>)
  endforeach()
endfunction()

# What lies in a folder named kernels is built once per class, everything else once. Paths are relative
# to the project, so that the names of the folders above it do not matter.
file(GLOB_RECURSE ORBA_BASE_SOURCES CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR}
  services/*.cpp vector/*.cpp dense/*.cpp statistics/*.cpp)
set(ORBA_KERNEL_SOURCES ${ORBA_BASE_SOURCES})
list(FILTER ORBA_BASE_SOURCES EXCLUDE REGEX "/kernels/")
list(FILTER ORBA_KERNEL_SOURCES INCLUDE REGEX "/kernels/")

add_library(orba_base OBJECT ${ORBA_BASE_SOURCES})
target_link_libraries(orba_base PRIVATE orba_options)
target_compile_options(orba_base PRIVATE -march=x86-64 -fno-exceptions -fno-rtti)
# The compiler's own OpenMP runtime, which a program with parallel regions of its own shares.
set_source_files_properties(
  ${PROJECT_SOURCE_DIR}/services/threads/thread_count.cpp ${PROJECT_SOURCE_DIR}/vector/frame/threader.cpp
  ${PROJECT_SOURCE_DIR}/services/verbose.cpp ${PROJECT_SOURCE_DIR}/statistics/frame/threading.cpp
  PROPERTIES COMPILE_OPTIONS "${OpenMP_CXX_FLAGS}")
# Chains of dependent operations longer than the processor looks ahead: the packs of a round interleaved.
file(GLOB ORBA_LONG_CHAINS CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/vector/kernels/trig/*.cpp)
set_source_files_properties(${ORBA_LONG_CHAINS} PROPERTIES COMPILE_OPTIONS
  "$<$<CXX_COMPILER_ID:GNU>:-fschedule-insns;-fsched-pressure>")
orba_add_class_objects(orba_kernels ${ORBA_KERNEL_SOURCES})

set(ORBA_OBJECTS $<TARGET_OBJECTS:orba_base>)
foreach(class IN LISTS ORBA_KERNEL_CLASSES)
  list(APPEND ORBA_OBJECTS $<TARGET_OBJECTS:orba_kernels_c${class}>)
endforeach()

# The export list comes from the function table through the preprocessor.
set(ORBA_EXPORT_MAP ${PROJECT_BINARY_DIR}/orba.map)
add_custom_command(
  OUTPUT ${ORBA_EXPORT_MAP}
  COMMAND ${CMAKE_CXX_COMPILER} -E -P -x c++ -I${PROJECT_SOURCE_DIR}
          ${PROJECT_SOURCE_DIR}/vector/frame/exports.map.in -o ${ORBA_EXPORT_MAP}
  DEPENDS ${PROJECT_SOURCE_DIR}/vector/frame/exports.map.in ${PROJECT_SOURCE_DIR}/vector/functions.def
          ${PROJECT_SOURCE_DIR}/vector/function_table.h ${PROJECT_SOURCE_DIR}/statistics/frame/exports.def
  VERBATIM)
add_custom_target(orba_export_map DEPENDS ${ORBA_EXPORT_MAP})

add_library(orba SHARED ${ORBA_OBJECTS})
add_dependencies(orba orba_export_map)
set_target_properties(orba PROPERTIES
  VERSION ${PROJECT_VERSION} SOVERSION 1 LINK_DEPENDS ${ORBA_EXPORT_MAP} LINKER_LANGUAGE CXX)
target_link_options(orba PRIVATE -Wl,--version-script=${ORBA_EXPORT_MAP} -Wl,-z,now)
if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")  # whose calls the program may have to resolve
  target_link_options(orba PRIVATE -Wl,-z,defs)
endif()
target_include_directories(orba INTERFACE
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
target_link_libraries(orba PRIVATE ${CMAKE_DL_LIBS} Threads::Threads OpenMP::OpenMP_CXX)
add_library(Orba::orba ALIAS orba)

# The same objects with their internals within reach, for tests and benchmarks.
add_library(orba_internal STATIC ${ORBA_OBJECTS})
set_target_properties(orba_internal PROPERTIES LINKER_LANGUAGE CXX)
target_include_directories(orba_internal INTERFACE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
target_link_libraries(orba_internal INTERFACE ${CMAKE_DL_LIBS} Threads::Threads OpenMP::OpenMP_CXX)
