// The undecorated entry points, one for each RYN_EXPORT row of the export
// table. The parameter types come from the decorated function, and the
// definition must match the bare-name declaration of the public header, so
// a row that disagrees with the header does not compile.
#include "RynHwDll.h"
#include "exports/Forwarders.h"

#define RYN_EXPORT(name, n, bare, translation)                                                                  \
    static_assert(std::tuple_size_v<::ryn::exports::Signature<&RYN_DECORATED(name, n)>::Arguments> * 4 == (n),  \
                  #name ": argument bytes do not match the declaration");                                       \
    extern "C" ::ryn::exports::ResultOf<&RYN_DECORATED(name, n)> bare(RYN_PARAMS_##n(RYN_DECORATED(name, n))) { \
        return ::ryn::exports::forward<&RYN_DECORATED(name, n), ::ryn::exports::Translation::translation>(      \
            RYN_ARGS_##n);                                                                                      \
    }
#define RYN_EXPORT_DECORATED(name, n)

#include "exports/ExportTable.inc"
