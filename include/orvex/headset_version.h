/// \file
/// The version of the headset plug-in: of the headers, and of the library that is loaded.
///
/// The version is MAJOR.MINOR.PATCH. MAJOR changes when a client that was built earlier would no longer work,
/// MINOR when something is added, PATCH otherwise.
///
/// \code
///   if (orvex_headset_plugin_version() < ORVEX_HEADSET_PLUGIN_VERSION) {
///       ...                               // the library is older than the headers of this client
///   }
/// \endcode
///
/// This header compiles as C99 and as C++17, and later.
#ifndef ORVEX_HEADSET_VERSION_H
#define ORVEX_HEADSET_VERSION_H

/// \def ORVEX_API
/// Marks a function that the library exports.
#if defined(_WIN32)
#define ORVEX_API
#elif defined(__GNUC__)
#define ORVEX_API __attribute__((visibility("default")))
#else
#define ORVEX_API
#endif

/// The major version of the headers.
#define ORVEX_HEADSET_PLUGIN_VERSION_MAJOR 1
/// The minor version of the headers.
#define ORVEX_HEADSET_PLUGIN_VERSION_MINOR 1
/// The patch version of the headers.
#define ORVEX_HEADSET_PLUGIN_VERSION_PATCH 0

/// A version as one number: 1.2.3 is 1002003.
#define ORVEX_HEADSET_PLUGIN_MAKE_VERSION(major, minor, patch) ((major)*1000000 + (minor)*1000 + (patch))

/// The version of the headers as one number. The preprocessor can compare it.
#define ORVEX_HEADSET_PLUGIN_VERSION                                      \
    ORVEX_HEADSET_PLUGIN_MAKE_VERSION(ORVEX_HEADSET_PLUGIN_VERSION_MAJOR, \
                                      ORVEX_HEADSET_PLUGIN_VERSION_MINOR, \
                                      ORVEX_HEADSET_PLUGIN_VERSION_PATCH)

/// \cond
#define ORVEX_HEADSET_PLUGIN_QUOTE_(text) #text
#define ORVEX_HEADSET_PLUGIN_TEXT_(major, minor, patch) \
    ORVEX_HEADSET_PLUGIN_QUOTE_(major)                  \
    "." ORVEX_HEADSET_PLUGIN_QUOTE_(minor) "." ORVEX_HEADSET_PLUGIN_QUOTE_(patch)
/// \endcond

/// The version of the headers as a text, "1.2.3".
#define ORVEX_HEADSET_PLUGIN_VERSION_STRING                                                            \
    ORVEX_HEADSET_PLUGIN_TEXT_(ORVEX_HEADSET_PLUGIN_VERSION_MAJOR, ORVEX_HEADSET_PLUGIN_VERSION_MINOR, \
                               ORVEX_HEADSET_PLUGIN_VERSION_PATCH)

#ifdef __cplusplus
extern "C" {
#endif

/** Asks for the version of the library that is loaded. Needs no start; may be called at any time, from any
 * thread. A library that lacks this function is 1.0.
 * \return ORVEX_HEADSET_PLUGIN_VERSION as it was when the library was built: 1002003 for 1.2.3 */
ORVEX_API int orvex_headset_plugin_version(void);

#ifdef __cplusplus
}
#endif

#endif
