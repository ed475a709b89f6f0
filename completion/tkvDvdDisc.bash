# Completes the arguments of tkvDvdDisc in bash.
_tkvDvdDisc() {
    local cur prev words cword split
    local films='3gp|avi|dv|flv|m2ts|m4v|mkv|mov|mp4|mpeg|mpg|mts|ogv|ts|vob|webm|wmv'
    _init_completion -s || return
    case $prev in
        -o | --output) _filedir -d ;;
        --write) _filedir toml ;;
        --background)
            _filedir '@(jpg|jpeg|png|tif|tiff|bmp|gif|webp|heic|avif|jp2|jpx)'
            COMPREPLY+=($(compgen -W none -- "$cur"))
            ;;
        --music)
            _filedir "@(aac|ac3|flac|m4a|mp3|ogg|opus|wav|$films)"
            COMPREPLY+=($(compgen -W none -- "$cur"))
            ;;
        --burn)
            # Without an equals sign a film follows.
            $split && COMPREPLY=($(compgen -W "$(compgen -G '/dev/sr*')" -- "$cur")) && return
            ;;&
        --size) COMPREPLY=($(compgen -W 'dvd5 dvd9' -- "$cur")) ;;
        --chapters)
            COMPREPLY=($(compgen -W 'marks none every=' -- "$cur"))
            [[ ${COMPREPLY-} != *= ]] || compopt -o nospace
            ;;
        --subtitles) COMPREPLY=($(compgen -W 'auto none de en es fr it ja nl pt' -- "$cur")) ;;
        --titles) COMPREPLY=($(compgen -W 'all longest' -- "$cur")) ;;
        --volume) COMPREPLY=($(compgen -W 'keep even' -- "$cur")) ;;
        --pitch) COMPREPLY=($(compgen -W 'keep film' -- "$cur")) ;;
        --language) COMPREPLY=($(compgen -W 'de en es fr it ja nl pt' -- "$cur")) ;;
        --label)
            COMPREPLY=($(compgen -S = -W 'play-all play-film previous next menu chapters chapter
                title minutes languages sound subtitles no-subtitles' -- "$cur"))
            compopt -o nospace
            ;;
        --title) ;;
        *)
            $split && return
            if [[ $cur == -* ]]; then
                COMPREPLY=($(compgen -W '--output --preview --write --no-image --burn --erase --clean
                    --keep-going --verify --quiet --pal --ntsc --first-film --join --no-menu --title --background --music --size
                    --chapters --subtitles --titles --volume --pitch --language --label --help --version' -- "$cur"))
            else
                _filedir "@(toml|$films)"
            fi
            ;;
    esac
} && complete -F _tkvDvdDisc tkvDvdDisc
