# Fails unless exactly the public headers are installed: each under its own path, none of those that are internal.

cmake_minimum_required(VERSION 3.25)  # for IN_LIST

file(GLOB_RECURSE foundation RELATIVE ${SOURCE} ${SOURCE}/foundation/*.h)
list(FILTER foundation EXCLUDE REGEX
  "/(VertexCorners|equal_positions|image_decoders|lifetimes|mesh_adjacency|mesh_normals)\\.h$")
file(GLOB_RECURSE library RELATIVE ${SOURCE}/vl_raster_gl/src ${SOURCE}/vl_raster_gl/src/*.h)
list(FILTER library EXCLUDE REGEX "^internal/")
file(GLOB_RECURSE toolkit RELATIVE ${SOURCE} ${SOURCE}/toolkit/*.h)
list(FILTER toolkit EXCLUDE REGEX "^toolkit/internal/")
set(expected ${foundation} ${library} ${toolkit})

file(GLOB_RECURSE installed RELATIVE ${INCLUDE} ${INCLUDE}/*)
if(NOT "Core_RL_GL.h" IN_LIST installed)
  message(SEND_ERROR "${INCLUDE} holds no Core_RL_GL.h")
endif()
foreach(header IN LISTS expected)
  if(NOT header IN_LIST installed)
    message(SEND_ERROR "${header} is not installed; add it to the headers of its target")
  endif()
endforeach()
foreach(header IN LISTS installed)
  if(NOT header IN_LIST expected)
    message(SEND_ERROR "${header} is installed and is no public header")
  endif()
endforeach()
