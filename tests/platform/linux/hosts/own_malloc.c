/* A host with an allocator of its own, as browsers and their kin have: what the C library allocates comes
 * from here, and a library that gave it back to the C library's own allocator would end the process. It loads
 * the plug-in, lists devices with it, and lets udev work on its own behalf. */
#include <dlfcn.h>
#include <errno.h>
#include <hidapi/hidapi.h>
#include <libudev.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* An allocator that never takes anything back, and knows its own. */
enum { arena_size = 64 << 20, alignment = 16 };
static _Alignas(alignment) unsigned char arena[arena_size];
static size_t used;

static size_t* size_of(void* block) {
    return (size_t*)(void*)((unsigned char*)block - alignment);
}

static void require_own(void* block) {
    if ((unsigned char*)block < arena || (unsigned char*)block >= arena + arena_size) {
        abort();
    }
}

void* malloc(size_t size) {
    const size_t whole = (size + 2 * alignment - 1) / alignment * alignment;
    const size_t begin = __atomic_fetch_add(&used, whole, __ATOMIC_RELAXED);
    if (size > arena_size || begin + whole > arena_size) {
        errno = ENOMEM;
        return NULL;
    }
    void* const block = arena + begin + alignment;
    *size_of(block) = size;
    return block;
}

void* calloc(size_t count, size_t size) {
    return malloc(count * size); /* the arena is zero, and nothing is used twice */
}

void* realloc(void* block, size_t size) {
    void* const moved = malloc(size);
    if (block != NULL && moved != NULL) {
        require_own(block);
        memcpy(moved, block, *size_of(block) < size ? *size_of(block) : size);
    }
    return moved;
}

void free(void* block) {
    if (block != NULL) {
        require_own(block);
    }
}

static int list_with_udev(void* libudev) {
    struct udev* (*const new_context)(void) = (struct udev * (*)(void)) dlsym(libudev, "udev_new");
    struct udev_enumerate* (*const new_list)(struct udev*) =
        (struct udev_enumerate * (*)(struct udev*)) dlsym(libudev, "udev_enumerate_new");
    int (*const scan)(struct udev_enumerate*) =
        (int (*)(struct udev_enumerate*))dlsym(libudev, "udev_enumerate_scan_devices");
    return scan(new_list(new_context()));
}

int main(int argc, char** argv) {
    void* const plugin = argc == 2 ? dlopen(argv[1], RTLD_NOW | RTLD_LOCAL) : NULL;
    if (plugin == NULL) {
        fprintf(stderr, "usage: %s PLUGIN\n", argv[0]);
        return 2;
    }
    struct hid_device_info* (*const list)(unsigned short, unsigned short) =
        (struct hid_device_info * (*)(unsigned short, unsigned short)) dlsym(plugin, "hid_enumerate");
    void (*const free_list)(struct hid_device_info*) =
        (void (*)(struct hid_device_info*))dlsym(plugin, "hid_free_enumeration");
    for (int round = 0; round < 3; ++round) {
        free_list(list(0, 0));
    }
    return list_with_udev(dlopen("libudev.so.1", RTLD_NOW)) < 0 ? 1 : 0;
}
