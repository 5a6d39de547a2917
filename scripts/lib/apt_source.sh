# shellcheck shell=bash
# SPDX-License-Identifier: Apache-2.0
# Debian's source packages, through lists of apt that are private to a folder.

apt_source_lists() { # FOLDER: makes its lists once a day; sets apt_options
    local folder=$1 keyring=/usr/share/keyrings/debian-archive-keyring.gpg
    local debian=${SWITCHCFG_DEBIAN_MIRROR:-http://deb.debian.org/debian}
    local security=${SWITCHCFG_DEBIAN_SECURITY_MIRROR:-http://deb.debian.org/debian-security}
    apt_options=(-q -o "Dir::Etc::SourceList=$folder/sources.list" -o Dir::Etc::SourceParts=/dev/null
        -o "Dir::State::Lists=$folder/lists" -o "Dir::Cache=$folder/cache" -o APT::Sandbox::User=root)
    mkdir -p "$folder/lists/partial" "$folder/cache/archives/partial"
    cat >"$folder/sources.list" <<-END
	deb-src [signed-by=$keyring] $debian bookworm main
	deb-src [signed-by=$keyring] $debian bookworm-updates main
	deb-src [signed-by=$keyring] $security bookworm-security main
	END
    [ -n "$(find "$folder/updated" -mmin -1440 2>/dev/null)" ] && return 0
    apt-get "${apt_options[@]}" update && touch "$folder/updated"
}

# fetch_source APT-FOLDER FOLDER NAME VERSION: unpacked, with Debian's patches, in FOLDER/source. The version that is
# asked for, or the archive's own when it has moved on.
fetch_source() {
    local unpacked
    apt_source_lists "$1" || return 1
    (cd "$2" && { apt-get "${apt_options[@]}" source "$3=$4" || apt-get "${apt_options[@]}" source "$3"; }) || return 1
    unpacked=$(find "$2" -mindepth 1 -maxdepth 1 -type d)
    mv "$unpacked" "$2/source"
}
