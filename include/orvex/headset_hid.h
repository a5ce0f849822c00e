/// \file
/// HID access by usage: what the plug-in adds to hidapi's functions.
///
/// The library exports every function of hidapi under hidapi's name and with hidapi's meaning, and these
/// five. They take the handles that the library's own hid_open() and hid_open_path() return. A handle of
/// another hidapi is refused, as is one that was closed.
///
/// \code
///   hid_device* headset = hid_open(0x047F, 0xC056, NULL);
///   unsigned char report[64];
///   uint32_t length = 0;
///   if (hid_gen_led_event(headset, 0x08, 0x09, 1, report, &length) == 0)  // LED page, Mute
///       hid_write(headset, report, length);
///   ...
///   int size = hid_read(headset, report, sizeof report);
///   if (size > 0 && hid_process_read(headset, report, size) == 1)
///       ...                                                               // the mute key is pressed
/// \endcode
///
/// **Handles.** A handle stands for one top-level collection of a headset: what hid_enumerate() lists as one
/// entry. Reports of the headset's other collections do not arrive at it.
///
/// **Usages** are those of the HID Usage Tables, with the usage page first. **Reports** are bytes; byte 0 is
/// the report id, 0 for a headset without report ids. Lengths are in bytes and count byte 0.
///
/// **Threads.** Every function may be called from any thread, several at once on one handle. None but
/// hid_cancel_io() touches the headset, and none waits.
///
/// This header compiles as C99 and as C++17, and later. It does not need hidapi's header.
#ifndef ORVEX_HEADSET_HID_H
#define ORVEX_HEADSET_HID_H

#include <stdint.h>

#include "orvex/headset_version.h"

#ifdef __cplusplus
extern "C" {
#endif

struct hid_device_; /**< hidapi's hid_device */

/** Sets one indicator on or off and builds the output report that it belongs to.
 *
 * The handle remembers which usages are on. The report holds every usage of its report id that was set so
 * far; a usage stays on until it is set again with value 0. The report is not sent: pass it to hid_write().
 * \param device           the headset
 * \param usage_page       usage page of the indicator
 * \param usage            usage of the indicator; one that is only inside a usage range is not found
 * \param value            0: off; every other value: on
 * \param[out] buffer      gets the report. It must have room for the longest output report of the headset;
 *                         this is not checked.
 * \param[out] out_length  gets the length of the report
 * \return 0; -1 when an argument is NULL, the handle is not open, the headset has no such indicator, or the
 *         report cannot be built. `buffer` and `out_length` are left alone then. */
ORVEX_API int hid_gen_led_event(struct hid_device_* device, uint16_t usage_page, uint16_t usage,
                                uint32_t value, uint8_t* buffer, uint32_t* out_length);

/** Sets several indicators of one usage page and builds one output report: that of the first usage.
 * \param device           the headset
 * \param usage_page       usage page of the indicators
 * \param usages           usages of the indicators; there is at least one, even where `count` is 0
 * \param values           a value for each: 0: off; every other value: on
 * \param count            how many usages are set, from the first on
 * \param[out] buffer      gets the report, as in hid_gen_led_event()
 * \param[out] out_length  gets the length of the report
 * \return 0. **Also 0, with `buffer` and `out_length` left alone**, when the headset lacks one of the
 *         indicators; those before it are set. Initialise `out_length` with 0 to tell the two apart.
 *         -1 when an argument is NULL or the handle is not open. When the report cannot be built: 1, or -1
 *         where `count` is 0. */
ORVEX_API int hid_gen_led_events(struct hid_device_* device, uint16_t usage_page, const uint16_t* usages,
                                 const uint32_t* values, int32_t count, uint8_t* buffer,
                                 uint32_t* out_length);

/** Looks for a pressed mute key in an input report: usage 0x2F or 0xB5 of any page.
 *
 * The handle remembers the last report of each report id: a mute key in a report of one id is still found
 * when a report of another id arrives. If the key is declared as absolute, a report without it can count too.
 * \param device  the headset
 * \param report  the report, as hid_read() returns it. For a headset without report ids it may begin with
 *                the byte 0 or lack it.
 * \param length  its length
 * \return 1 when a mute key is pressed; -1 when none is, an argument is NULL, the handle is not open, or the
 *         report cannot be decoded */
ORVEX_API int hid_process_read(struct hid_device_* device, const uint8_t* report, int32_t length);

/** Asks whether the headset has reports of an id.
 * \param device      the headset
 * \param report_id   the id
 * \param directions  1: input reports; 2: output reports; 3: both directions must have it
 * \return 1 when it has; 0 when it has not, for other directions, and for a handle that is not open */
ORVEX_API int hid_check_report_id(struct hid_device_* device, uint32_t report_id, uint32_t directions);

/** Releases every hid_read(), hid_read_timeout() and hid_write() that waits on the handle in another thread:
 * they return -1. Later ones are not affected.
 * \param device  the headset; NULL, or a handle that is not open, is ignored */
ORVEX_API void hid_cancel_io(struct hid_device_* device);

#ifdef __cplusplus
}
#endif

#endif
