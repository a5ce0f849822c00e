/* A client of hidapi that knows nothing of the plug-in. It is linked once with hidapi and once with the
 * plug-in, and says the same both times about a headset, a Plantronics Blackwire 3220, whose serial number it
 * is given and whose mute key is pressed over and over meanwhile. Paths are opaque, so it says nothing of
 * them. */
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
}

static void say_output(hid_device* device) {
    const unsigned char report[] = {indicator_report, 0x01};
    printf("write: %d\n", hid_write(device, report, sizeof report));
    printf("write of nothing: %d\n", hid_write(device, report, 0));
    unsigned char feature[room] = {indicator_report};
    printf("get feature: %d\n", hid_get_feature_report(device, feature, sizeof feature));
    printf("send feature: %d\n", hid_send_feature_report(device, report, sizeof report));
    printf("error text: %s\n", hid_error(device) == NULL ? "none" : "some");
}

static void say_device(const char* how, hid_device* device) {
    printf("%s: %s\n", how, device == NULL ? "not opened" : "opened");
    if (device != NULL) {
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
    printf("init: %d\n", hid_init());
    struct hid_device_info* const list = hid_enumerate(0, 0);
    const struct hid_device_info* telephony = NULL;
    for (const struct hid_device_info* entry = list; entry != NULL; entry = entry->next) {
        if (entry->serial_number != NULL && wcscmp(entry->serial_number, serial) == 0) {
            telephony = telephony == NULL && entry->usage_page == telephony_page ? entry : telephony;
            say_entry(entry);
        }
    }
    if (telephony != NULL) {
        say_device("by path", hid_open_path(telephony->path));
        say_device("by ids", hid_open(telephony->vendor_id, telephony->product_id, NULL));
        say_device("by serial number", hid_open(telephony->vendor_id, telephony->product_id, serial));
        say_device("by another serial number",
                   hid_open(telephony->vendor_id, telephony->product_id, L"another"));
        say_device("by another product", hid_open(telephony->vendor_id, 0xFFFF, NULL));
        struct hid_device_info* const same = hid_enumerate(telephony->vendor_id, telephony->product_id);
        printf("by ids there is %s\n", same == NULL ? "none" : "one");
        hid_free_enumeration(same);
    }
    printf("another vendor: %s\n", hid_enumerate(0xFFFF, 0) == NULL ? "none" : "some");
    printf("another path: %s\n", hid_open_path("/dev/hidraw-none") == NULL ? "none" : "some");
    printf("error text: %s\n", hid_error(NULL) == NULL ? "none" : "some");
    hid_free_enumeration(list);
    hid_free_enumeration(NULL);
    printf("exit: %d\n", hid_exit());
    return 0;
}
