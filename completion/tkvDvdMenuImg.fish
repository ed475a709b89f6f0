# Completes the arguments of tkvDvdMenuImg in fish.

# Folders, and files of the extensions.
function __tkvDvdMenuImg_files
    complete -C "'' "(commandline -ct) |
        string match -rei -- '(?:/|\.(?:'(string join '|' $argv)'))(?:\t|$)'
end

set -l pictures '(__tkvDvdMenuImg_files jpg jpeg png tif tiff bmp gif webp heic avif jp2 jpx)'
set -l tool complete -c tkvDvdMenuImg

$tool -f
$tool -o mode -x -a '-1\tpreview 0\t"animation frames" 1\tjacket 2\toverlay' -d 'what to write'
$tool -o o -r -F -d 'the picture or folder to write'
$tool -o isMainMenu -x -a '0 1' -d '1: up to four thumbnails are big'
$tool -o bkg -x -a $pictures -d 'picture behind the page'
$tool -o thumbs -x -a '(__tkvDvdMenuImg_files jpg)' -d 'pictures and folders of frames'
$tool -o captions -x -d 'their captions'
$tool -o title -x -d 'title of the page'
$tool -o dvdBt_readAll -x -d 'label of the button that plays all'
$tool -o dvdBt_menuPrev -x -d 'label of the button to the previous page'
$tool -o dvdBt_menuMain -x -d 'label of the button to the main menu'
$tool -o dvdBt_menuNext -x -d 'label of the button to the next page'
$tool -o icon -x -a $pictures -d 'picture for the jacket'
$tool -o isPal -x -a '0 1' -d 'accepted, without effect'
$tool -o v -x -a '0 1' -d '1: tell every step'
$tool -o h -d 'show the usage'
