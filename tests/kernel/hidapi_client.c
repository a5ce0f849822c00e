/* A client of hidapi that knows nothing of the plug-in and calls every function of hidapi.h. It says the same
 * with hidapi and with the plug-in in hidapi's place about a headset, a Plantronics Blackwire 3220, whose serial
 * number it is given and whose mute key is pressed over and over meanwhile. Paths are opaque, so it says of them
 * only which are equal; texts of errors differ, so it says only whether there was one. */
#include <hidapi/hidapi.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <wchar.h>

enum { telephony_page = 0x0B, key_report = 0x08, indicator_report = 0x09, room = 64, patience_ms = 20000 };

static void say_text(const char* what, const wchar_t* text) {
    printf("%s:", what);
    if (text == NULL) {
        printf(" none");
    }
    for (; text != NULL && *text != L'\0'; ++text) {
        printf(" %lx", (unsigned long)*text);
    }
    printf("\n");
}

static void say_bytes(const char* what, int size, const unsigned char* bytes) {
    printf("%s: %d:", what, size);
    for (int i = 0; i < size; ++i) {
        printf(" %02x", bytes[i]);
    }
    printf("\n");
}

static void say_error(const char* after, hid_device* device) {
    printf("%s: error: %s\n", after, wcscmp(hid_error(device), L"Success") == 0 ? "none" : "some");
}

static void say_version(void) {
    const struct hid_api_version* const version = hid_version();
    printf("version: %d.%d.%d, %s\n", version->major, version->minor, version->patch, hid_version_str());
}

static void say_entry(const struct hid_device_info* entry) {
    printf("entry: %04x:%04x release %04x usage %04x:%04x interface %d bus %d\n", entry->vendor_id,
           entry->product_id, entry->release_number, entry->usage_page, entry->usage, entry->interface_number,
           (int)entry->bus_type);
    say_text("  serial", entry->serial_number);
    say_text("  manufacturer", entry->manufacturer_string);
    say_text("  product", entry->product_string);
}

static void say_strings(hid_device* device) {
    wchar_t text[room] = L"";
    printf("manufacturer string: %d\n", hid_get_manufacturer_string(device, text, room));
    say_text("  text", text);
    printf("product string: %d\n", hid_get_product_string(device, text, room));
    say_text("  text", text);
    printf("serial number string: %d\n", hid_get_serial_number_string(device, text, room));
    say_text("  text", text);
    printf("cut product string: %d\n", hid_get_product_string(device, text, 4));
    say_text("  text", text);
    printf("indexed string: %d\n", hid_get_indexed_string(device, 1, text, room));
}

/* hidapi lists every collection of the device, and the plug-in the one that is open. */
static const struct hid_device_info* find_telephony(const struct hid_device_info* list,
                                                    const wchar_t* serial) {
    for (; list != NULL; list = list->next) {
        if (list->usage_page == telephony_page && list->serial_number != NULL &&
            wcscmp(list->serial_number, serial) == 0) {
            return list;
        }
    }
    return NULL;
}

static void say_device_info(hid_device* device, const struct hid_device_info* listed) {
    const struct hid_device_info* const info =
        find_telephony(hid_get_device_info(device), listed->serial_number);
    printf("device info: %s\n", info == NULL ? "without telephony" : "with telephony");
    if (info != NULL) {
        say_entry(info);
        printf("  path: %s\n", strcmp(info->path, listed->path) == 0 ? "the listed one" : "another");
        printf("  again: %s\n",
               find_telephony(hid_get_device_info(device), listed->serial_number) == info ? "the same" : "new");
    }
}

static void say_descriptor(hid_device* device) {
#if HID_API_VERSION >= HID_API_MAKE_VERSION(0, 14, 0)
    unsigned char descriptor[HID_API_MAX_REPORT_DESCRIPTOR_SIZE];
    say_bytes("report descriptor", hid_get_report_descriptor(device, descriptor, sizeof descriptor),
              descriptor);
#endif
    (void)device;
}

static void drain(hid_device* device) {
    unsigned char report[room];
    while (hid_read_timeout(device, report, sizeof report, 0) > 0) {
    }
}

/* Reads until a report comes that has something set. */
static void say_next_report(const char* what, hid_device* device,
                            int (*read_one)(hid_device*, unsigned char*)) {
    unsigned char report[room];
    int size = 0;
    do {
        memset(report, 0, sizeof report);
        size = read_one(device, report);
    } while (size == 0 || (size > 1 && (report[0] != key_report || report[1] == 0)));
    say_bytes(what, size, report);
}

static int read_waiting(hid_device* device, unsigned char* report) {
    return hid_read(device, report, room);
}

static int read_with_limit(hid_device* device, unsigned char* report) {
    return hid_read_timeout(device, report, room, patience_ms);
}

static int read_into_one_byte(hid_device* device, unsigned char* report) {
    return hid_read_timeout(device, report, 1, -1);
}

static void say_reports(hid_device* device) {
    say_next_report("hid_read", device, read_waiting);
    say_next_report("hid_read_timeout", device, read_with_limit);
    say_next_report("hid_read_timeout of one byte", device, read_into_one_byte);
    printf("nonblocking: %d\n", hid_set_nonblocking(device, 1));
    say_next_report("hid_read, nonblocking", device, read_waiting);
    printf("blocking: %d\n", hid_set_nonblocking(device, 0));
    drain(device);
#if HID_API_VERSION >= HID_API_MAKE_VERSION(0, 15, 0)
    printf("read error: %s\n", wcscmp(hid_read_error(device), L"Success") == 0 ? "none" : "some");
#endif
    unsigned char asked[room] = {key_report};
    const int size = hid_get_input_report(device, asked, sizeof asked);
    printf("get input report: %d: %02x\n", size, asked[0]);
    say_error("get input report", device);
    asked[0] = 0x7F;
    printf("get another input report: %d\n", hid_get_input_report(device, asked, sizeof asked));
    say_error("get another input report", device);
}

static void say_output(hid_device* device) {
    const unsigned char report[] = {indicator_report, 0x01};
    printf("write of nothing: %d\n", hid_write(device, report, 0));
    say_error("write of nothing", device);
    printf("write: %d\n", hid_write(device, report, sizeof report));
    say_error("write", device);
#if HID_API_VERSION >= HID_API_MAKE_VERSION(0, 15, 0)
    printf("send output report: %d\n", hid_send_output_report(device, report, sizeof report));
#endif
    unsigned char feature[room] = {indicator_report};
    printf("get feature: %d\n", hid_get_feature_report(device, feature, sizeof feature));
    printf("send feature: %d\n", hid_send_feature_report(device, report, sizeof report));
    say_error("send feature", device);
}

static void say_device(const char* how, hid_device* device, const struct hid_device_info* listed) {
    printf("%s: %s\n", how, device == NULL ? "not opened" : "opened");
    say_error(how, NULL);
    if (device != NULL) {
        say_device_info(device, listed);
        say_descriptor(device);
        say_strings(device);
        say_reports(device);
        say_output(device);
        hid_close(device);
    }
}

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: %s SERIAL\n", argv[0]);
        return 2;
    }
    wchar_t serial[room] = L"";
    for (size_t i = 0; i < strlen(argv[1]) && i < room - 1; ++i) {
        serial[i] = (wchar_t)(unsigned char)argv[1][i];
    }
    say_version();
    printf("init: %d\n", hid_init());
    say_error("init", NULL);
    struct hid_device_info* const list = hid_enumerate(0, 0);
    const struct hid_device_info* const telephony = find_telephony(list, serial);
    for (const struct hid_device_info* entry = list; entry != NULL; entry = entry->next) {
        if (entry->serial_number != NULL && wcscmp(entry->serial_number, serial) == 0) {
            say_entry(entry);
        }
    }
    if (telephony != NULL) {
        const unsigned short vendor = telephony->vendor_id;
        const unsigned short product = telephony->product_id;
        say_device("by path", hid_open_path(telephony->path), telephony);
        say_device("by ids", hid_open(vendor, product, NULL), telephony);
        say_device("by serial number", hid_open(vendor, product, serial), telephony);
        say_device("by another serial number", hid_open(vendor, product, L"another"), telephony);
        say_device("by another product", hid_open(vendor, 0xFFFF, NULL), telephony);
        struct hid_device_info* const same = hid_enumerate(vendor, product);
        printf("by ids there is %s\n", same == NULL ? "none" : "one");
        say_error("by ids", NULL);
        hid_free_enumeration(same);
    }
    printf("another vendor: %s\n", hid_enumerate(0xFFFF, 0) == NULL ? "none" : "some");
    say_error("another vendor", NULL);
    printf("another path: %s\n", hid_open_path("/dev/hidraw-none") == NULL ? "none" : "some");
    say_error("another path", NULL);
    hid_free_enumeration(list);
    hid_free_enumeration(NULL);
    printf("exit: %d\n", hid_exit());
    return 0;
}
