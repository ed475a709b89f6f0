#!/bin/sh
# Turns an installation into what Debian wants of a package: compressed man pages, a changelog, a
# copyright file, links within /usr that are relative, and reproducible times.
#
#   debian_files.sh FOLDER PACKAGE VERSION MAINTAINER
set -eu
umask 022
export LC_ALL=C
sources=$(realpath "$(dirname "$0")/..")
package=$2
version=$3
maintainer=$4
cd "$1/usr"

gzip -9n share/man/man1/*.1
[ ! -d share/zsh ] || mv share/zsh/site-functions share/zsh/vendor-completions
for link in share/tkvDvdMenuImg/tools/*; do
    [ ! -L "$link" ] || ln -sf "../../../bin/${link##*/}" "$link"
done

doc=share/doc/$package
mkdir -p "$doc"
license=$sources/LICENSE
[ "$package" != tkvdvdcheck ] || license=$sources/src/check/LICENSE
cp "$license" "$doc/copyright"
# What people read, without pictures, which are larger than the programs. Links lead to what is there;
# of the others only their words are left.
case $package in
    tkvdvdmenuimg)
        for text in README.md docs/troubleshooting.md docs/embedding.md; do
            awk -v RS= -v ORS='\n\n' '!/!\[/' "$sources/$text" |
                sed -E 's#\(docs/(troubleshooting|embedding)\.md#(\1.md#g
                    s#\(\.\./examples/embedding/#(examples/#g
                    s#\[([^]]*)\]\((docs/|\.\./|[A-Z])[^)]*\)#\1#g' >"$doc/${text#docs/}"
        done
        cp -r "$sources/examples/embedding" "$doc/examples"
        ;;
    tkvdvddisc) ln -s ../tkvdvdmenuimg/README.md ../tkvdvdmenuimg/troubleshooting.md "$doc" ;;
esac
# What is new: the newest part of CHANGELOG.md, in Debian's form.
{
    printf 'tkvdvdmenuimg (%s) unstable; urgency=medium\n\n' "$version"
    awk '/^## / && shown { exit }
        /^- / { shown = 1; print "  * " substr($0, 3) }
        /^  / { print "  " $0 }' "$sources/CHANGELOG.md" | fmt -t -w 78
    printf '\n -- %s  %s\n' "$maintainer" "$(date -uR -d "@$SOURCE_DATE_EPOCH")"
} | gzip -9n >"$doc/changelog.gz"

cd ..
find . -depth -type d -empty -delete
chmod -R u=rwX,go=rX usr
find . -exec touch -h -d "@$SOURCE_DATE_EPOCH" {} +
