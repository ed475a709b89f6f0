# Completes the arguments of tkvDvdMenuImg in bash.
_tkvDvdMenuImg() {
    local cur prev words cword
    _init_completion || return
    case $prev in
        -mode) COMPREPLY=($(compgen -W '-1 0 1 2' -- "$cur")) ;;
        -isMainMenu | -isPal | -v) COMPREPLY=($(compgen -W '0 1' -- "$cur")) ;;
        -bkg | -icon) _filedir '@(jpg|jpeg|png|tif|tiff|bmp|gif|webp|heic|avif|jp2|jpx)' ;;
        -thumbs) _filedir jpg ;;
        -o) _filedir ;;
        -captions | -title | -dvdBt_*) ;;
        *)
            COMPREPLY=($(compgen -W '-mode -o -isMainMenu -bkg -thumbs -captions -title
                -dvdBt_readAll -dvdBt_menuPrev -dvdBt_menuMain -dvdBt_menuNext -icon -isPal -v
                -h' -- "$cur"))
            ;;
    esac
} && complete -F _tkvDvdMenuImg tkvDvdMenuImg
