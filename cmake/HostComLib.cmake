# Instead of src/comlib: qor::ComLib is the host's own library, the target QOR_COMLIB_TARGET.
if(NOT TARGET "${QOR_COMLIB_TARGET}")
  message(FATAL_ERROR "QOR_BUILD_COMLIB is off, so that QOR_COMLIB_TARGET has to name the target of "
    "a libqor_ComLib that is there by now; there is no target \"${QOR_COMLIB_TARGET}\"")
endif()
get_target_property(qor_host_comlib ${QOR_COMLIB_TARGET} ALIASED_TARGET)
if(NOT qor_host_comlib)
  set(qor_host_comlib ${QOR_COMLIB_TARGET})
endif()
# The loader has to find it as a file of its own.
get_target_property(qor_host_comlib_type ${qor_host_comlib} TYPE)
if(NOT qor_host_comlib_type STREQUAL "SHARED_LIBRARY")
  message(FATAL_ERROR "QOR_COMLIB_TARGET: ${QOR_COMLIB_TARGET} is no shared library")
endif()
add_library(qor::ComLib ALIAS ${qor_host_comlib})
