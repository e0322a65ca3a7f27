# Helpers shared by the folder CMakeLists files.
#
# The library is built in layers. A layer's sources compile once, into an object library;
# the layer's static archive (for tests, which link only the layers they exercise) and
# libqvnrt.so (the product) are both made from those objects.

set_property(GLOBAL PROPERTY QVNRT_LAYERS "")

# qvnrt_layer(<name> [DEPENDS <layer or library>...])
function(qvnrt_layer name)
  cmake_parse_arguments(ARG "" "" "DEPENDS" ${ARGN})
  add_library(${name}_objects OBJECT)
  add_library(${name} STATIC $<TARGET_OBJECTS:${name}_objects>)
  foreach(target ${name}_objects ${name})
    target_include_directories(${target} PUBLIC
      $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
      $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
    if(ARG_DEPENDS)
      target_link_libraries(${target} PUBLIC ${ARG_DEPENDS})
    endif()
  endforeach()
  set_property(GLOBAL APPEND PROPERTY QVNRT_LAYERS ${name})
endfunction()

# qvnrt_sources(<layer> <files...>): adds sources to a layer, from any folder.
function(qvnrt_sources layer)
  target_sources(${layer}_objects PRIVATE ${ARGN})
endfunction()

function(qvnrt_add_shared_library)
  get_property(layers GLOBAL PROPERTY QVNRT_LAYERS)
  set(objects "")
  foreach(layer ${layers})
    list(APPEND objects $<TARGET_OBJECTS:${layer}_objects>)
  endforeach()
  add_library(qvnrt SHARED ${objects})
  target_include_directories(qvnrt PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
                                          $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  # The public headers use C++20; an application that links the library gets it too.
  target_compile_features(qvnrt INTERFACE cxx_std_20)
  # The archives bring nothing new (every object is already in); they carry the layers'
  # own dependencies, such as libdl, onto the link line.
  target_link_libraries(qvnrt PRIVATE ${layers})
  target_link_options(qvnrt PRIVATE -Wl,--no-undefined)
  set_target_properties(qvnrt PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION 0)
endfunction()
