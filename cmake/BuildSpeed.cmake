# A build from clean reads the same headers hundreds of times. Two things make that once or seldom: the
# heaviest are compiled ahead, once for all targets of a kind, and the sources of a folder are compiled
# together. Neither goes together with a compiler cache, which wants one source at a time; a build with
# one sees whether each source includes what it uses.
set(separate OFF)
if(CMAKE_CXX_COMPILER_LAUNCHER)
  set(separate ON)
endif()
option(MACSECD_SEPARATE "Compile each source by itself, without precompiled headers" ${separate})

# precompiled(KIND LIBRARIES ... HEADERS ...): the libraries are those whose headers and flags are needed.
function(precompiled kind)
  cmake_parse_arguments(KIND "" "" "LIBRARIES;HEADERS" ${ARGN})
  if(MACSECD_SEPARATE)
    return()
  endif()
  set(source ${CMAKE_BINARY_DIR}/precompiled/${kind}.cpp)
  if(NOT EXISTS ${source})
    file(WRITE ${source} "")
  endif()
  add_library(precompiled_${kind} STATIC ${source})
  target_include_directories(precompiled_${kind} PRIVATE ${CMAKE_SOURCE_DIR})
  target_link_libraries(precompiled_${kind} PRIVATE ${KIND_LIBRARIES})
  target_precompile_headers(precompiled_${kind} PRIVATE ${KIND_HEADERS})
endfunction()

# Has a target read the precompiled headers of a kind.
function(use_precompiled target kind)
  if(TARGET precompiled_${kind})
    target_precompile_headers(${target} REUSE_FROM precompiled_${kind})
  endif()
endfunction()

# Compiles the sources of a folder together, but for those with a trace handle of their own, which all
# have one name, and those of folders from which macsecctl takes single objects.
set(folders_of_clients platform text process trace)
function(compile_folders_together target)
  if(MACSECD_SEPARATE)
    return()
  endif()
  set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
  get_target_property(sources ${target} SOURCES)
  foreach(source IN LISTS sources)
    file(STRINGS ${source} handle REGEX "TraceHandle (const )?traceHandle" LIMIT_COUNT 1)
    cmake_path(GET source PARENT_PATH folder)
    cmake_path(GET folder FILENAME folder)
    if(NOT handle AND NOT folder IN_LIST folders_of_clients)
      set_source_files_properties(${source} PROPERTIES UNITY_GROUP ${target}_${folder})
    endif()
  endforeach()
endfunction()

set(own_headers <algorithm> <functional> <map> <memory> <optional> <set> <span> <sstream> <string> <vector>
  ${CMAKE_SOURCE_DIR}/runtime/Describe.h ${CMAKE_SOURCE_DIR}/runtime/Reactor.h
  ${CMAKE_SOURCE_DIR}/runtime/Trace.h)
set(host_headers ${own_headers} <fmt/format.h> <nlohmann/json.hpp> ${CMAKE_SOURCE_DIR}/model/Status.h
  ${CMAKE_SOURCE_DIR}/model/Config.h ${CMAKE_SOURCE_DIR}/codec/FrameCodec.h
  ${CMAKE_SOURCE_DIR}/engine/MkaRootSm.h)
