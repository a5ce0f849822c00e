/// \file
/// Virtual headsets: headsets that live in the process, for testing a calling client without hardware.
///
/// `liborvex_headset_plugin_virtual.so` is the plug-in with these functions beside its own. Load it in place
/// of the product library, plug a headset, run the client's calls, press buttons and look at the indicators.
/// To the plug-in a virtual headset is a headset like any other: it has the report descriptor of a real one,
/// and every report passes through the same code.
///
/// \code
///   int headset = orvex_virtual_plug("jabra-link-380c", NULL);
///   ...                                                             // the client reports a connected call
///   orvex_virtual_wait_indicator(headset, 0x08, 0x17, 1, 2000);      // off-hook is lit: 1
///   orvex_virtual_press(headset, 0x0B, 0x2F);                        // the mute key
///   ...                                                             // the client's onMuteCall runs
///   orvex_virtual_unplug(headset);
/// \endcode
///
/// **Conventions.** A headset is a positive number. Functions return a negative number, or NULL, on failure;
/// orvex_virtual_error() then says why. Usages are those of the HID Usage Tables: page 0x08 holds the
/// indicators (0x17 Off-Hook, 0x09 Mute, 0x18 Ring, 0x20 Hold), page 0x0B the telephony keys (0x20 Hook
/// Switch, 0x21 Flash, 0x2F Phone Mute), page 0x0C the consumer keys. Every function may be called from any
/// thread. Texts are UTF-8. Times that a function waits are in milliseconds.
#ifndef ORVEX_VIRTUAL_HEADSET_H
#define ORVEX_VIRTUAL_HEADSET_H

#include <stddef.h>
#include <stdint.h>

/// \def ORVEX_VIRTUAL_API
/// Marks a function that the library exports.
#if defined(__GNUC__)
#define ORVEX_VIRTUAL_API __attribute__((visibility("default")))
#else
#define ORVEX_VIRTUAL_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** A headset of the caller's own making, for orvex_virtual_plug_device(). The texts and bytes are copied. */
struct orvex_virtual_device {
    const uint8_t* descriptor; /**< report descriptor (HID 1.11, 6.2.2) */
    size_t descriptor_length;  /**< its length in bytes */
    uint16_t vendor_id;        /**< USB vendor id; a vendor that the plug-in knows gets a driver */
    uint16_t product_id;       /**< USB product id */
    const char* manufacturer;  /**< manufacturer string, or NULL for none */
    const char* product;       /**< product string, or NULL for none */
    const char* serial;        /**< serial number, or NULL for none */
};

/** What orvex_virtual_misbehave() can make a headset do. */
enum orvex_virtual_fault {
    ORVEX_VIRTUAL_FAULT_NONE = 0,            /**< behave again */
    ORVEX_VIRTUAL_FAULT_OPEN_REFUSED = 1,    /**< refuse to be opened */
    ORVEX_VIRTUAL_FAULT_WRITE_HANGS = 2,     /**< take no output report: writes run into their time limit */
    ORVEX_VIRTUAL_FAULT_WRITE_FAILS = 3,     /**< fail every output report */
    ORVEX_VIRTUAL_FAULT_READ_FAILS = 4,      /**< fail the read that waits, once */
    ORVEX_VIRTUAL_FAULT_READ_ONE_BYTE = 5,   /**< answer the read that waits with a single byte, once */
    ORVEX_VIRTUAL_FAULT_UNPLUG_IN_OPEN = 6,  /**< be unplugged while it is being opened */
    ORVEX_VIRTUAL_FAULT_UNPLUG_IN_WRITE = 7, /**< be unplugged while it is being written to */
};

/** What a watcher is told. */
enum orvex_virtual_event_kind {
    ORVEX_VIRTUAL_PLUGGED = 1,   /**< the headset was plugged in */
    ORVEX_VIRTUAL_UNPLUGGED = 2, /**< the headset was unplugged */
    ORVEX_VIRTUAL_OUTPUT = 3,    /**< an output report reached the headset: `report`, `report_length` */
    ORVEX_VIRTUAL_INPUT = 4,     /**< the headset sent an input report: `report`, `report_length` */
    ORVEX_VIRTUAL_INDICATOR = 5, /**< an indicator changed: `usage_page`, `usage`, `on` */
    ORVEX_VIRTUAL_UNEXPECTED =
        6 /**< an output report other than the expected one came: `report`, `text` says which */
};

/** One event. The pointers are valid during the call only. */
struct orvex_virtual_event {
    enum orvex_virtual_event_kind kind; /**< what happened */
    int headset;                        /**< the headset that it concerns */
    uint64_t time_us;                   /**< microseconds on a steady clock */
    const uint8_t* report;              /**< report bytes, byte 0 the report id (0 for none), or NULL */
    size_t report_length;               /**< length of the report in bytes, the id included */
    uint16_t usage_page;                /**< usage page of the indicator */
    uint16_t usage;                     /**< usage of the indicator */
    int on;                             /**< 1: lit, 0: dark */
    const char* text;                   /**< what was wrong, or NULL */
};

/** Receives events, in order, one at a time, on the thread that caused them, which waits: return soon. It may
 * call any function of this header but orvex_virtual_watch().
 * \param event  what happened; valid during the call
 * \param user   the pointer that was handed to orvex_virtual_watch() */
typedef void (*orvex_virtual_watcher)(const struct orvex_virtual_event* event, void* user);

/** Lists the built-in models.
 * \param index  0, 1, ...
 * \return the name of that model, such as "jabra-link-380c"; NULL past the last one. Valid for ever. */
ORVEX_VIRTUAL_API const char* orvex_virtual_model(size_t index);

/** Asks for the product string of a built-in model.
 * \param model  name of the model
 * \return its product string, valid for ever; NULL for an unknown name */
ORVEX_VIRTUAL_API const char* orvex_virtual_model_product(const char* model);

/** Plugs a headset of a built-in model.
 * \param model   name of the model
 * \param serial  replaces the model's own serial number unless it is NULL
 * \return the headset, or -1 on failure, as for an unknown model */
ORVEX_VIRTUAL_API int orvex_virtual_plug(const char* model, const char* serial);

/** Plugs a headset made from a descriptor.
 * \param device  what to plug; copied
 * \return the headset, or -1 on failure, as for no descriptor or a malformed one */
ORVEX_VIRTUAL_API int orvex_virtual_plug_device(const struct orvex_virtual_device* device);

/** Unplugs a headset: blocked reads and writes fail, and the plug-in is told. The number stays valid for
 * looking at what was recorded and for orvex_virtual_replug().
 * \param headset  the headset
 * \return 0, or -1 for no such headset or one that is not plugged */
ORVEX_VIRTUAL_API int orvex_virtual_unplug(int headset);

/** Plugs an unplugged headset again, on the same path, with its indicators dark.
 * \param headset  the headset
 * \return 0, or -1 for no such headset or one that is plugged */
ORVEX_VIRTUAL_API int orvex_virtual_replug(int headset);

/** Asks for the serial number of a headset.
 * \param headset  the headset
 * \return the serial number, empty if it has none; NULL for no such headset. Valid until the calling thread
 *         calls this again. */
ORVEX_VIRTUAL_API const char* orvex_virtual_serial(int headset);

/** Asks for the product string of a headset.
 * \param headset  the headset
 * \return the product string, empty if it has none; NULL for no such headset. Valid until the calling thread
 *         calls this again. */
ORVEX_VIRTUAL_API const char* orvex_virtual_product(int headset);

/** Presses and releases a key: sends an input report with the usage set, and one with it cleared.
 * \param headset     the headset
 * \param usage_page  usage page of the key
 * \param usage       usage of the key
 * \return 0, or -1 for no such headset, one that is not plugged, or one without such a key */
ORVEX_VIRTUAL_API int orvex_virtual_press(int headset, uint16_t usage_page, uint16_t usage);

/** Sets a key to pressed or released and leaves it so, as a hook switch is; sends one input report.
 * \param headset     the headset
 * \param usage_page  usage page of the key
 * \param usage       usage of the key
 * \param pressed     1: pressed, 0: released
 * \return 0, or -1 as for orvex_virtual_press() */
ORVEX_VIRTUAL_API int orvex_virtual_set_key(int headset, uint16_t usage_page, uint16_t usage, int pressed);

/** Sends an input report as it stands.
 * \param headset  the headset
 * \param report   the report, byte 0 its id (0 for a headset without ids); copied
 * \param length   its length in bytes, which must be that of the report
 * \return 0, or -1 for no such headset, one that is not plugged, or one without such a report */
ORVEX_VIRTUAL_API int orvex_virtual_send_report(int headset, const uint8_t* report, size_t length);

/** Looks at an indicator.
 * \param headset     the headset
 * \param usage_page  usage page of the indicator
 * \param usage       usage of the indicator
 * \return 1 when it is lit, 0 when it is dark, -1 when the headset has no such indicator */
ORVEX_VIRTUAL_API int orvex_virtual_indicator(int headset, uint16_t usage_page, uint16_t usage);

/** Waits for an indicator.
 * \param headset     the headset
 * \param usage_page  usage page of the indicator
 * \param usage       usage of the indicator
 * \param on          what to wait for: 1: lit, 0: dark
 * \param timeout_ms  how long to wait at most
 * \return 1 when it is so, 0 when the time is over, -1 when the headset has no such indicator */
ORVEX_VIRTUAL_API int orvex_virtual_wait_indicator(int headset, uint16_t usage_page, uint16_t usage, int on,
                                                   int timeout_ms);

/** Counts the output reports that reached a headset.
 * \param headset  the headset
 * \return their number, or -1 for no such headset */
ORVEX_VIRTUAL_API int orvex_virtual_output_count(int headset);

/** Copies an output report that reached a headset.
 * \param headset       the headset
 * \param index         which one, 0 for the first
 * \param[out] report   gets the report, byte 0 its id (0 for a headset without ids)
 * \param length        how many bytes there is room for
 * \param[out] time_us  gets the time when it came, in microseconds on a steady clock, unless it is NULL
 * \return the report's length in bytes, or -1 for no such report */
ORVEX_VIRTUAL_API int orvex_virtual_output(int headset, int index, uint8_t* report, size_t length,
                                           uint64_t* time_us);

/** Waits until output reports have reached a headset.
 * \param headset     the headset
 * \param count       how many there are to be, counted from when it was plugged for the first time
 * \param timeout_ms  how long to wait at most
 * \return 1, or 0 when the time is over, or -1 for no such headset */
ORVEX_VIRTUAL_API int orvex_virtual_wait_outputs(int headset, int count, int timeout_ms);

/** Expects this exact output report next, after those expected earlier. Once anything was expected, a report
 * that is not the next expected one fails in the plug-in's write, is told to the watcher and fails
 * orvex_virtual_verify().
 * \param headset  the headset
 * \param report   the report, byte 0 its id (0 for a headset without ids); copied
 * \param length   its length in bytes
 * \return 0, or -1 for no such headset */
ORVEX_VIRTUAL_API int orvex_virtual_expect(int headset, const uint8_t* report, size_t length);

/** Waits for every expected report. Either way the expectations are over.
 * \param headset     the headset
 * \param timeout_ms  how long to wait at most
 * \return 0 when all came and nothing else did; -1 when not: orvex_virtual_error() has wanted and found */
ORVEX_VIRTUAL_API int orvex_virtual_verify(int headset, int timeout_ms);

/** Makes a headset misbehave until it is told otherwise or is plugged again.
 * \param headset  the headset
 * \param fault    what it is to do
 * \return 0, or -1 for no such headset or a fault that it cannot have */
ORVEX_VIRTUAL_API int orvex_virtual_misbehave(int headset, enum orvex_virtual_fault fault);

/** Calls a watcher for every event of every headset from now on, in place of an earlier one. When this
 * returns, the earlier watcher is not running.
 * \param watcher  the watcher; NULL for none
 * \param user     handed to the watcher at each call */
ORVEX_VIRTUAL_API void orvex_virtual_watch(orvex_virtual_watcher watcher, void* user);

/** Unplugs every headset and forgets all of them. */
ORVEX_VIRTUAL_API void orvex_virtual_reset(void);

/** Asks why a call failed.
 * \return why the calling thread's last failed call failed; valid until its next failure */
ORVEX_VIRTUAL_API const char* orvex_virtual_error(void);

#ifdef __cplusplus
}
#endif

#endif
