/* Scalar types, fixed text buffers and the attribute macros every header of the server uses. */
#ifndef KQTYPE_H
#define KQTYPE_H

#ifdef __cplusplus
#define KQ_BEGIN_C extern "C" {
#define KQ_END_C }
#else
#define KQ_BEGIN_C
#define KQ_END_C
#endif

typedef unsigned char byte;
typedef unsigned short usint;
typedef unsigned int ulint;
typedef int lint;
typedef unsigned long long ulint64;
typedef long long lint64;
typedef char schar;

typedef ulint kqbool;  /* 1 true, 0 false; settings may also hold 255, not configured */
typedef lint kqcode_t; /* 0 or positive: success; negative: a result code (ARCH_E_...) */

enum { KQ_SYSNAME_MAX = 128, KQ_PATHNAME_MAX = 256 };

typedef schar sysname_t[KQ_SYSNAME_MAX + 1];   /* up to 128 characters and a terminator */
typedef schar pathname_t[KQ_PATHNAME_MAX + 1]; /* up to 256 characters and a terminator */

/* The compiler checks the arguments of printf-like functions. */
#if defined(__GNUC__)
#define KQ_PRINTF(format_at, first_argument) \
    __attribute__((format(printf, format_at, first_argument)))
#else
#define KQ_PRINTF(format_at, first_argument)
#endif

#endif
