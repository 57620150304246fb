#!/bin/sh
# SPDX-FileCopyrightText: Morvane Keeper contributors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# usage: file_type_test.sh MIME.xml
# Builds a MIME database of our file alone and asks it for the type of a database's name.
set -eu
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
mkdir -p "$folder/mime/packages"
cp "$1" "$folder/mime/packages/"
update-mime-database "$folder/mime"
grep -qx 'application/x-morvane-kvdb:\*\.kvdb' "$folder/mime/globs"
