#pragma once
// Compiler quirks, kept in one place.

// GCC 12 and 13 at -O3 warn of overlapping copies inside std::string when a
// short literal is assigned to a string or put in front of one (GCC bug
// 105329); the two buffers never overlap. Wrap only the functions it hits.
#if defined(__GNUC__) && !defined(__clang__) && __GNUC__ >= 12
#define ZENTA_STRING_RESTRICT_FALSE_ALARM_BEGIN \
  _Pragma("GCC diagnostic push") _Pragma("GCC diagnostic ignored \"-Wrestrict\"")
#define ZENTA_STRING_RESTRICT_FALSE_ALARM_END _Pragma("GCC diagnostic pop")
#else
#define ZENTA_STRING_RESTRICT_FALSE_ALARM_BEGIN
#define ZENTA_STRING_RESTRICT_FALSE_ALARM_END
#endif
