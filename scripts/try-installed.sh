#!/usr/bin/env bash
# Runs inside the clean root that scripts/try-packages.sh makes: installs the packages of /try, tries them as a person
# without rights, purges them, and compares the root with what it was.
set -euo pipefail
cd /try
export DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8

say() { printf -- '-- %s\n' "$*"; }

apt() { apt-get -qq -y --no-install-recommends "$@" >apt.log 2>&1 || { cat apt.log; exit 1; }; }

# as PERSON's own: no rights, a home that is thrown away.
person() { setpriv --reuid=1000 --regid=1000 --clear-groups env HOME=/tmp/home PATH=/usr/bin:/bin "$@"; }

# Every file but what the package tools write about packages.
everything() {
    find / -xdev \( -path /proc -o -path /sys -o -path /dev -o -path /try -o -path /tmp/home -o -path /tmp/ball.mov \
        -o -path /var/lib/dpkg -o -path /var/lib/apt -o -path /var/cache -o -path /var/log -o -path /etc/ld.so.cache \) \
        -prune -o -print | sort
    find /dev/shm -mindepth 1
}


mkdir -p /tmp/home
chown 1000:1000 /tmp/home
apt update
say 'what the packages depend on'
for package in corvel_*.deb corvel-dev_*.deb; do
    depends=$(dpkg-deb --field "$package" Depends | sed 's/corvel (= [^)]*),* *//')
    apt satisfy "$depends"
done
everything >before

say 'installing corvel'
apt install ./corvel_*.deb
person corvel --version
ln -s /usr/bin/corvel /tmp/home/movies
say 'through a link to the link'
person /tmp/home/movies doctor

say 'rendering the example'
person corvel render '/try/examples/ball/ball.####.exr' -o /tmp/ball.mov --codec ap4h \
    --audio /try/examples/ball/ball.wav --writeTimeCode --progress none
person corvel info /tmp/ball.mov | head -n 6

say 'manual page'
man corvel | grep -A 2 '^NAME'
man corvel | grep '^EXIT STATUS'

say 'completion in bash, fish and zsh'
bash completions.sh

say 'installing corvel-dev'
apt install ./corvel-dev_*.deb
say 'a worker and a plug-in, built on it with CMake'
for project in worker plugin; do
    person cmake -G Ninja -S examples/$project -B /tmp/home/$project -DCMAKE_BUILD_TYPE=Release >/tmp/home/cmake.log ||
        { cat /tmp/home/cmake.log; exit 1; }
    person cmake --build /tmp/home/$project >/tmp/home/cmake.log || { cat /tmp/home/cmake.log; exit 1; }
done
say 'and programs with pkg-config'
for module in kex-image corvel-bridge; do
    case $module in
    kex-image) printf '#include "Kex/Image/LUT.h"\nint main() { return Kex::Image::LUT::getLut(6) == nullptr; }\n' ;;
    *) printf '#include "quicktime/BridgeName.h"\n%s\n' \
        'int main() { return Morvane::QuickTime::makeBridgeName().size() != 32; }' ;;
    esac >/tmp/home/program.cpp
    # shellcheck disable=SC2046  # several words
    person g++ -std=c++20 /tmp/home/program.cpp -o /tmp/home/program $(pkg-config --cflags --libs $module)
    person env LD_LIBRARY_PATH=/usr/lib/corvel/Corvel.app/Contents/Frameworks /tmp/home/program
    printf '%s works\n' "$module"
done

say 'purging both'
apt purge corvel-dev corvel
everything >after
rm -rf /tmp/home
diff before after
[[ ! -e /usr/bin/corvel && ! -L /usr/bin/corvel ]]
printf 'before and after are alike: %s files\n' "$(wc -l <before)"
