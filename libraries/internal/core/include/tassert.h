#pragma once

#include <QtGlobal>

// The definition lives in the host library, which builds with hidden
// visibility: the declaration carries the export itself, since this header
// belongs to the header-only core and cannot include the host's generated
// export header.
#if defined(kabrowser_host_EXPORTS)
#define KA_TASSERT_API Q_DECL_EXPORT
#else
#define KA_TASSERT_API Q_DECL_IMPORT
#endif

// The host assertion: reports the broken contract (expression, source path
// and line) through the message log and returns; it never aborts. Every
// program of the module links the host library.
KA_TASSERT_API bool t_assert(const char* expression, const char* file, int line, bool flag = false);
