# Completes the arguments of tkvDvdDisc in fish.

# Folders, and files of the extensions.
function __tkvDvdDisc_files
    complete -C "'' "(string replace -r -- '^--[a-z]+=' '' (commandline -ct)) |
        string match -rei -- '(?:/|\.(?:'(string join '|' $argv)'))(?:\t|$)'
end

set -l films 3gp avi dv flv m2ts m4v mkv mov mp4 mpeg mpg mts ogv ts vob webm wmv
set -l sounds aac ac3 flac m4a mp3 ogg opus wav $films
set -l pictures jpg jpeg png tif tiff bmp gif webp heic avif jp2 jpx
set -l disc complete -c tkvDvdDisc

$disc -f -a "(__tkvDvdDisc_files toml $films)"
$disc -s o -l output -x -a '(__fish_complete_directories)' -d 'the place of all that is made'
$disc -l preview -d 'only pictures of the menus'
$disc -l write -x -a '(__tkvDvdDisc_files toml)' -d 'only a project file, to be edited'
$disc -l no-image -d 'make no disc.iso'
$disc -l burn -d 'write the disc and compare it'
$disc -l erase -d 'write over what is on the disc'
$disc -l clean -d 'keep no intermediate results'
$disc -l keep-going -d 'leave out films that turn out to be faulty'
$disc -l verify -d 'read kept results whole and make damaged ones anew'
$disc -l quiet -d 'tell nothing but errors'
$disc -l pal -d 'a PAL disc'
$disc -l ntsc -d 'an NTSC disc'
$disc -l first-film -d 'play the first film before the menu comes'
$disc -l join -d 'one film of the pieces of a recording'
$disc -l no-menu -d 'the films just play'
$disc -l title -x -d 'heads the menus and names the disc'
$disc -l background -x -a "(__tkvDvdDisc_files $pictures) none" -d 'picture behind the menus'
$disc -l music -x -a "(__tkvDvdDisc_files $sounds) none" -d 'sound of the menus'
$disc -l size -x -a 'dvd5\t"4.7 GB" dvd9\t"8.5 GB"' -d 'the blank disc'
$disc -l chapters -x -a 'marks none every=' -d 'which films have a chapter menu'
$disc -l subtitles -x -a 'auto none de en es fr it ja nl pt' -d 'on demand, none, or a language to show'
$disc -l titles -x -a 'all longest' -d 'of DVDs: all, or only the longest'
$disc -l volume -x -a 'keep even' -d 'loudness of the films'
$disc -l pitch -x -a 'keep film' -d 'of the sound of films that play faster'
$disc -l language -x -a 'de en es fr it ja nl pt' -d 'language of the menus'
$disc -l label -x -d 'words a label of the menus' \
    -a 'play-all= play-film= previous= next= menu= chapters= chapter= title= minutes= languages= sound= subtitles= no-subtitles='
$disc -s h -l help -d 'tell the options'
$disc -l version -d 'tell the version'
