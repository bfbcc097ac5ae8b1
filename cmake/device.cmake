# What modem/hal stands on where rbk is built for a device: the headers and libraries of RBK_DEVICE_SYSROOT, in the
# place of platform/include and platform/linux. Nothing is searched for on this machine.
set(device_headers cutils/properties.h qmi_client.h qmi_idl.h services/nas_v01.h services/pdc_v01.h services/sar_v01.h
                   services/uim_v01.h diag_lsm.h qti_shared_mutex.h qti_logger.h libxml/parser.h libxml/tree.h)

# Each of them is called by modem/hal itself: for properties; the QMI client; qmi_idl_get_message_c_struct_len alone;
# the service objects of nas, pdc, sar and uim; diag; the mutex; the logger; the reports of configuration validations.
# vsyslog is the C library's.
set(device_libraries cutils qmi_cci qmi_common_so idl diag qcrilNrQtiMutex qcrilNrLogger xml2)

set(missing "")
foreach(header IN LISTS device_headers)
  if(NOT EXISTS "${RBK_DEVICE_SYSROOT}/include/${header}")
    string(APPEND missing "\n  include/${header}")
  endif()
endforeach()
set(device_files "")
foreach(library IN LISTS device_libraries)
  set(file "${RBK_DEVICE_SYSROOT}/lib/lib${library}.so")
  list(APPEND device_files ${file})
  if(NOT EXISTS "${file}")
    string(APPEND missing "\n  lib/lib${library}.so")
  endif()
endforeach()
if(missing)
  message(FATAL_ERROR "RBK_DEVICE_SYSROOT=\"${RBK_DEVICE_SYSROOT}\" lacks${missing}")
endif()

add_library(rbk_seam INTERFACE)
target_include_directories(rbk_seam SYSTEM INTERFACE "${RBK_DEVICE_SYSROOT}/include")
add_library(LibXml2::LibXml2 INTERFACE IMPORTED)  # its headers and library are among the others

add_library(rbk_platform INTERFACE)
target_link_libraries(rbk_platform INTERFACE ${device_files})
# as-needed: rbk asks for what it calls, whatever stands in the list. What the libraries need in turn is on the device,
# not in the folder. They are found by the device's linker: no path of this machine goes in.
target_link_options(rbk_platform INTERFACE LINKER:--as-needed LINKER:--allow-shlib-undefined
                                           "LINKER:-rpath-link,${RBK_DEVICE_SYSROOT}/lib")
set(CMAKE_SKIP_RPATH ON)
