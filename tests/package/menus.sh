#!/usr/bin/env bash
# The desktop file and the file type as the desktop's own checks take them. Usage: menus.sh FOLDER
set -euo pipefail
command -v desktop-file-validate >/dev/null || {
    printf 'desktop-file-validate is not installed\n'
    exit 77
}
complaints=$(desktop-file-validate "$1/recview.desktop")
printf '%s' "$complaints"
[ -z "$complaints" ]
python3 -c 'import sys, xml.dom.minidom; xml.dom.minidom.parse(sys.argv[1])' "$1/recording2.xml"
[ "$(sed -n 's/^MimeType=\([^;]*\);.*/\1/p' "$1/recview.desktop")" = "$(sed -n 's/.*mime-type type="\([^"]*\)".*/\1/p' "$1/recording2.xml")" ]
