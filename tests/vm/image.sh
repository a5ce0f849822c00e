# shellcheck shell=bash disable=SC2034,SC2154 # it shares the variables of tests/vm/run
# What the virtual machine consists of: the packages that it is made from, its kernel, and the base image of its root
# file system. Part of tests/vm/run, which sets `cache` and `libdirs`. All of it is kept in $cache and made once.

# Programs and libraries of the machine.
guest_packages=(busybox-static udev kmod libkmod2 libssl3 libudev1 libhidapi-hidraw0)
# Modules that a test may ask for, with what they depend on.
guest_modules=(uhid hid-generic hid-jabra hid-logitech hid-logitech-hidpp hid-microsoft hid-plantronics usbhid evdev
    dummy_hcd libcomposite usb_f_hid usb_f_midi snd-usb-audio virtio_pci 9pnet_virtio 9p)
multiarch=x86_64-linux-gnu

# Package lists of its own, so that it needs neither privileges nor the lists of the machine at hand.
apt_get() {
    apt-get -qq -o APT::Sandbox::User=root -o Debug::NoLocking=1 -o Dir::State::Lists="$cache/lists" \
        -o Dir::Cache::pkgcache= -o Dir::Cache::srcpkgcache= "$@"
}

apt_cache() {
    apt-cache -o Dir::State::Lists="$cache/lists" -o Dir::Cache::pkgcache= -o Dir::Cache::srcpkgcache= "$@"
}

need_tools() {
    local tool
    for tool in apt-get dpkg-deb flock gzip xz ldd timeout; do
        command -v "$tool" >/dev/null || unavailable "the program $tool is missing"
    done
}

update_lists() {
    mkdir -p "$cache/lists/partial"
    apt_get update || unavailable "the package lists cannot be fetched"
}

# Unpacks the downloaded packages of a folder.
unpack() { # FOLDER ROOT
    local package
    for package in "$1"/*.deb; do
        dpkg-deb -x "$package" "$2" || unavailable "$package cannot be unpacked"
    done
}

fetch_guest() { # ROOT
    local kernel
    kernel=$(apt_cache depends linux-image-amd64 | sed -n 's/.*Depends: \(linux-image-[0-9].*\)/\1/p' | head -n 1)
    [ -n "$kernel" ] || unavailable "the package lists name no kernel"
    (cd "$1" && apt_get download "${guest_packages[@]}" "$kernel") ||
        unavailable "the packages of the machine cannot be fetched"
}

# apt works out which of the emulator's dependencies are missing here.
fetch_qemu() { # ROOT
    mkdir -p "$1/partial"
    apt_get install -y --no-install-recommends --download-only -o Dir::Cache::archives="$1/" qemu-system-x86 \
        >/dev/null || unavailable "the emulator's packages cannot be fetched"
}

# Fetches and unpacks one part of the machine, once.
provide() { # NAME
    local root=$cache/$1
    [ ! -d "$root" ] || return 0
    rm -rf "$root.tmp"
    mkdir -p "$root.tmp/packages"
    update_lists
    "fetch_$1" "$root.tmp/packages"
    unpack "$root.tmp/packages" "$root.tmp"
    rm -rf "$root.tmp/packages"
    mv "$root.tmp" "$root"
}

find_qemu() {
    local installed
    if installed=$(command -v qemu-system-x86_64); then
        qemu=("$installed")
        return
    fi
    provide qemu
    local root=$cache/qemu
    qemu=(env "LD_LIBRARY_PATH=$root/usr/lib/$multiarch:$root/lib/$multiarch" "$root/usr/bin/qemu-system-x86_64"
        -L "$root/usr/share/qemu" -L "$root/usr/share/seabios")
}

# The number of SIZE bytes at an offset of the kernel's boot file.
boot_field() { # FILE OFFSET SIZE
    od -An -t "u$3" -j "$2" -N "$3" "$1" | tr -d ' '
}

# Takes the kernel proper out of its boot file (the kernel's documentation, x86 boot protocol). The emulator starts it
# directly, which saves the machine the unpacking: more than half of its start. Other packings are left as they are.
unwrap_kernel() { # FILE
    local sectors offset length
    sectors=$(boot_field "$1" $((0x1f1)) 1)
    offset=$(boot_field "$1" $((0x248)) 4)
    length=$(boot_field "$1" $((0x24c)) 4)
    tail -c "+$(((sectors + 1) * 512 + offset + 1))" "$1" | head -c "$length" |
        xz -dc --single-stream >"$kernel_image.tmp" 2>/dev/null || true
    [ "$(head -c 4 "$kernel_image.tmp" | tail -c 3)" = ELF ] || cp "$1" "$kernel_image.tmp"
    mv "$kernel_image.tmp" "$kernel_image"
}

# Copies the shared libraries of programs and libraries, and the loader, to where every program looks for them.
copy_libraries() { # ROOT FILE...
    local root=$1 path file
    shift
    path=$(IFS=: && echo "${libdirs[*]-}"):$cache/guest/usr/lib/$multiarch:$cache/guest/lib/$multiarch
    mkdir -p "$root/lib/$multiarch" "$root/lib64"
    for file; do
        LD_LIBRARY_PATH=$path ldd "$file" 2>/dev/null || true # it may be no program
    done | sort -u | while read -r name arrow file _; do
        case "$name $arrow $file" in
            */ld-linux*) cp -uL "$name" "$root/lib64/" ;;
            *" => not") complain "the library $name is missing" ;;
            *" => /"*) cp -uL "$file" "$root/lib/$multiarch/" ;;
        esac
    done
}

pack() { # ROOT COMPRESSION
    (cd "$1" && find . | "$cache/guest/bin/busybox" cpio -o -H newc -R 0:0 2>/dev/null) | gzip "-$2"
}

# depmod and modprobe are names of one program.
kmod_as() { # NAME ARGUMENT...
    (export LD_LIBRARY_PATH=$cache/guest/usr/lib/$multiarch:$cache/guest/lib/$multiarch &&
        exec -a "$1" "$cache/guest/bin/kmod" "${@:2}")
}

install_modules() { # ROOT
    local guest=$cache/guest release name
    release=$(basename "$guest"/lib/modules/*)
    kmod_as depmod -b "$guest" "$release"
    for name in "${guest_modules[@]}"; do
        kmod_as modprobe -d "$guest" -S "$release" --show-depends "$name"
    done | sed -n "s:^insmod $guest/\([^ ]*\).*:\1:p" | sort -u | while read -r name; do
        install -D -m 644 "$guest/$name" "$1/$name"
    done
    cp "$guest/lib/modules/$release"/modules.{builtin,builtin.modinfo,order} "$1/lib/modules/$release/"
    kmod_as depmod -b "$1" "$release"
}

install_udev() { # ROOT
    local guest=$cache/guest rules
    mkdir -p "$1"/lib/systemd "$1"/{lib,etc}/udev/rules.d
    cp "$guest/bin/udevadm" "$guest/bin/kmod" "$1/bin/"
    ln -s ../../bin/udevadm "$1/lib/systemd/systemd-udevd"
    for rules in 50-udev-default 60-input-id 60-evdev 60-persistent-input 80-drivers; do
        cp "$guest/lib/udev/rules.d/$rules.rules" "$1/lib/udev/rules.d/"
    done
}

install_users() { # ROOT
    local number=0 group
    mkdir -p "$1/etc"
    cat >"$1/etc/passwd" <<'USERS'
root:x:0:0:root:/root:/bin/sh
user:x:1000:1000:user:/tmp:/bin/sh
USERS
    # Those that udev's rules name.
    for group in root daemon tty dialout disk cdrom audio video input render kvm lp sgx plugdev; do
        echo "$group:x:$number:"
        number=$((number + 1))
    done >"$1/etc/group"
    echo "user:x:1000:" >>"$1/etc/group"
}

build_base() { # ROOT
    local guest=$cache/guest
    mkdir -p "$1"/{bin,sbin,proc,sys,dev,run,tmp,root,lib64,usr/bin,usr/sbin,usr/lib/locale} "$1/lib/$multiarch"
    cp "$guest/bin/busybox" "$1/bin/"
    ln -s kmod "$1/bin/modprobe"
    install -m 755 "$here/init" "$1/init"
    install_modules "$1"
    install_udev "$1"
    install_users "$1"
    # The plug-in loads these by name, so that no list of its libraries has them.
    cp -P "$guest/usr/lib/$multiarch"/{libudev.so.1*,libhidapi-hidraw.so.0*} "$1/lib/$multiarch/"
    copy_libraries "$1" "$1"/bin/{udevadm,kmod} "$1/lib/$multiarch"/*.so.*
    # The one UTF-8 locale that every Debian system has: without it hidapi turns other letters than ASCII's into nothing.
    [ ! -d /usr/lib/locale/C.utf8 ] || cp -r /usr/lib/locale/C.utf8 "$1/usr/lib/locale/"
    pack "$1" 6 >"$base_image.tmp"
    mv "$base_image.tmp" "$base_image"
}

# Gets everything ready and sets `qemu`, `kernel_image` and `base_image`. Of several at once one works, the others wait.
prepare_image() {
    local recipe
    need_tools
    mkdir -p "$cache" || unavailable "$cache cannot be made"
    cache=$(realpath -- "$cache")
    exec 9>"$cache/lock"
    flock 9
    find_qemu
    provide guest
    kernel_image=$cache/vmlinux
    [ -e "$kernel_image" ] || unwrap_kernel "$(echo "$cache"/guest/boot/vmlinuz-*)"
    recipe=$(cat "$here/image.sh" "$here/init" | sha256sum | head -c 16)
    base_image=$cache/base-$recipe.cpio.gz
    if [ ! -e "$base_image" ]; then
        rm -rf "$cache"/base*
        build_base "$cache/base"
        rm -rf "$cache/base"
    fi
    exec 9>&-
}
