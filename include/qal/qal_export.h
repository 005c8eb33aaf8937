// QAL_API marks what the library exports. The shared build hides every other symbol.
#ifndef QAL_QAL_EXPORT_H
#define QAL_QAL_EXPORT_H

#if defined(_WIN32)
#  if defined(QAL_BUILDING_LIBRARY) && defined(QAL_SHARED_LIBRARY)
#    define QAL_API __declspec(dllexport)
#  elif defined(QAL_SHARED_LIBRARY)
#    define QAL_API __declspec(dllimport)
#  else
#    define QAL_API
#  endif
#else
#  define QAL_API __attribute__((visibility("default")))
#endif

#endif  // QAL_QAL_EXPORT_H
