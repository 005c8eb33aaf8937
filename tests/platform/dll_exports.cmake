# The Windows DLL exports the public API (flat functions, container instantiations, the
# static operations) and nothing of the internals, and comes with its import library.
# Unlike the ELF build, the exception's type information need not be exported: its class
# has no virtual function, so every module that catches it emits its own copy, and the
# MinGW runtime compares type information by name across modules.
# Inputs: OBJDUMP, DLL, IMPORT_LIBRARY.
if(NOT EXISTS "${IMPORT_LIBRARY}")
  message(FATAL_ERROR "no import library ${IMPORT_LIBRARY}")
endif()
execute_process(COMMAND "${OBJDUMP}" -p "${DLL}" OUTPUT_VARIABLE table RESULT_VARIABLE result)
string(FIND "${table}" "[Ordinal/Name Pointer] Table" start)
if(NOT result EQUAL 0 OR start EQUAL -1)
  message(FATAL_ERROR "cannot read the export table of ${DLL}")
endif()
string(SUBSTRING "${table}" ${start} -1 exports)
if(exports MATCHES "N3qal6detail")
  message(FATAL_ERROR "internal symbols exported:\n${exports}")
endif()
# QAL_GetExtremum; t_QalVector<double>::operator()(int); t_QalMatrix<double>::t_QalMatrix(int, int);
# k_QalExceptionIndex::GetMessageW(); k_Qal::GaussJordan.
foreach(needed "QAL_GetExtremum" "_ZN11t_QalVectorIdEclEi" "_ZN11t_QalMatrixIdEC[12]Eii"
               "_ZNK19k_QalExceptionIndex11GetMessageW" "_ZN5k_Qal11GaussJordan")
  if(NOT exports MATCHES "${needed}")
    message(FATAL_ERROR "public API not exported (${needed}):\n${exports}")
  endif()
endforeach()
string(REGEX MATCHALL "\\] [A-Za-z_][A-Za-z0-9_]*" names "${exports}")
list(LENGTH names count)
message(STATUS "${DLL} exports ${count} names, none internal")
