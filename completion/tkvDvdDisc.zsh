#compdef tkvDvdDisc
# Completes the arguments of tkvDvdDisc in zsh.

local films='3gp|avi|dv|flv|m2ts|m4v|mkv|mov|mp4|mpeg|mpg|mts|ogv|ts|vob|webm|wmv'
local sounds="aac|ac3|flac|m4a|mp3|ogg|opus|wav|$films"
local pictures='jpg|jpeg|png|tif|tiff|bmp|gif|webp|heic|avif|jp2|jpx'

# Files of these extensions, or the word none.
_tkvDvdDisc_file_or_none() {
    _alternative "files:file:_files -g \"*.(#i)($1)(-.)\"" 'none:nothing:(none)'
}

_tkvDvdDisc_label() {
    compadd -S = play-all play-film previous next menu chapters chapter title minutes \
        languages sound subtitles no-subtitles
}

_tkvDvdDisc_chapters() {
    compadd marks none
    compadd -S '' every=
}

_arguments -S \
    '(-o --output)'{-o,--output=}'[the place of all that is made]:folder:_files -/' \
    '--preview[only pictures of the menus]' \
    '--write=[only a project file, to be edited]:file:_files -g "*.toml(-.)"' \
    '--no-image[make no disc.iso]' \
    '--burn=-[write the disc and compare it]::drive:_files -g "/dev/sr*"' \
    '--erase[write over what is on the disc]' \
    '--clean[keep no intermediate results]' \
    '--keep-going[leave out films that turn out to be faulty]' \
    '--verify[read kept results whole and make damaged ones anew]' \
    '--quiet[tell nothing but errors]' \
    '(--ntsc)--pal[a PAL disc]' \
    '(--pal)--ntsc[an NTSC disc]' \
    '--first-film[play the first film before the menu comes]' \
    '--join[one film of the pieces of a recording]' \
    '--no-menu[the films just play]' \
    '--title=[heads the menus and names the disc]:text: ' \
    "--background=[picture behind the menus]:picture: _tkvDvdDisc_file_or_none '$pictures'" \
    "--music=[sound of the menus]:sound: _tkvDvdDisc_file_or_none '$sounds'" \
    '--size=[the blank disc]:disc:((dvd5\:"4.7 GB" dvd9\:"8.5 GB"))' \
    '--chapters=[which films have a chapter menu]:rule:_tkvDvdDisc_chapters' \
    '--subtitles=[on demand, none, or a language to show]:which:(auto none de en es fr it ja nl pt)' \
    '--titles=[of DVDs]:which:(all longest)' \
    '--volume=[loudness of the films]:how:(keep even)' \
    '--pitch=[of the sound of films that play faster]:how:(keep film)' \
    '--language=[language of the menus]:language:(de en es fr it ja nl pt)' \
    '*--label=[words a label of the menus]:label:_tkvDvdDisc_label' \
    '(- *)'{-h,--help}'[tell the options]' \
    '(- *)--version[tell the version]' \
    "*:film:_files -g \"*.(#i)(toml|$films)(-.)\""
