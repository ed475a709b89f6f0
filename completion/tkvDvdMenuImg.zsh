#compdef tkvDvdMenuImg
# Completes the arguments of tkvDvdMenuImg in zsh.

local picture='picture:_files -g "*.(#i)(jpg|jpeg|png|tif|tiff|bmp|gif|webp|heic|avif|jp2|jpx)(-.)"'

_arguments \
    '-mode[what to write]:mode:((-1\:preview 0\:"folder of animation frames" 1\:jacket 2\:overlay))' \
    '-o[the picture or folder to write]:output:_files' \
    '-isMainMenu[1\: up to four thumbnails are big]:number:(0 1)' \
    "-bkg[picture behind the page]:$picture" \
    '-thumbs[pictures and folders of frames, joined by the separator]:thumbnail:_files -g "*.jpg(-.)"' \
    '-captions[their captions, joined the same way]:captions: ' \
    '-title[title of the page]:text: ' \
    '-dvdBt_readAll[label of the button that plays all]:text: ' \
    '-dvdBt_menuPrev[label of the button to the previous page]:text: ' \
    '-dvdBt_menuMain[label of the button to the main menu]:text: ' \
    '-dvdBt_menuNext[label of the button to the next page]:text: ' \
    "-icon[picture for the jacket]:$picture" \
    '-isPal[accepted, without effect]:number:(0 1)' \
    '-v[1\: tell every step]:number:(0 1)' \
    '-h[show the usage]'
