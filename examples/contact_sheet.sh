#!/usr/bin/env bash
# Draws the same main menu in twelve scripts, and the jacket with today's date as each language writes
# it, and joins them in one picture for inspection: missing glyphs (boxes), broken ligatures and
# joins, clipped lines, uneven baselines.
#
#   examples/contact_sheet.sh [SHEET.png]        out/contact-sheet.png below the checkout unless named
#
# TKV_TOOL names another program than the one in build/release.
set -euo pipefail

checkout=$(realpath "$(dirname "$0")/..")
source "$checkout/scripts/packages.sh"
install_packages "${sheet_packages[@]}"

media=$checkout/examples/media
sheet=$(realpath -m "${1:-$checkout/out/contact-sheet.png}")
tool=${TKV_TOOL:-$checkout/build/release/bin/tkvDvdMenuImg}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Joins its arguments as the tool takes lists.
list() {
    local joined=$1 item
    for item in "${@:2}"; do joined+=totoCestLePlusBeau$item; done
    printf '%s' "$joined"
}

# draw NUMBER LOCALE TITLE ALL NEXT LINE CAPTION...: a menu, as a wide display shows it, and a jacket.
draw() {
    local page=(-title "$3")
    LC_ALL=$2 "$tool" -mode 0 -isMainMenu 1 "${page[@]}" -bkg "$media/background.jpg" \
        -dvdBt_readAll "$4" -dvdBt_menuNext "$5" -captions "$(list "${@:7}")" -thumbs "$(list \
            "$media/sailing/000.jpg" "$media/wheel/000.jpg" "$media/city.jpg" \
            "$media/lighthouse/000.jpg")" -o "$work/frames" 2>>"$work/lines"
    convert "$work/frames/000.jpg" -resize '960x540!' "$work/menu-$1.png"
    LC_ALL=$2 "$tool" -mode 1 "${page[@]}" -bkg "$media/cover.jpg" -icon "$media/icon.jpg" \
        -dvdBt_readAll "$6" -o "$work/jacket-$1.png" 2>>"$work/lines"
}

number=10
while IFS='|' read -ra text; do
    draw $((number++)) "${text[@]}"
done <<'END'
fr_FR.UTF-8|Un été au bord de l'eau|Tout lire|Chapitres|Film de famille, 52 minutes|la traversée|la grande roue 🎡|la ville|le phare
el_GR.UTF-8|Καλοκαίρι στη θάλασσα|Αναπαραγωγή όλων|Κεφάλαια|Οικογενειακή ταινία, 52 λεπτά|το πέρασμα|η μεγάλη ρόδα|η πόλη|ο φάρος
ru_RU.UTF-8|Лето у моря|Смотреть всё|Главы|Семейный фильм, 52 минуты|переправа|колесо обозрения|город|маяк
hy_AM.UTF-8|Ամառը ծովի ափին|Դիտել բոլորը|Գլուխներ|Ընտանեկան ֆիլմ, 52 րոպե|անցումը|մեծ անիվը|քաղաքը|փարոսը
ka_GE.UTF-8|ზაფხული ზღვასთან|ყველას ნახვა|თავები|ოჯახური ფილმი, 52 წუთი|გადასვლა|დიდი ბორბალი|ქალაქი|შუქურა
he_IL.UTF-8|קיץ על שפת הים|נגן הכול|פרקים|סרט משפחתי, 52 דקות|ההפלגה|הגלגל הענק|העיר|המגדלור
ar_EG.UTF-8|صيف على شاطئ البحر|تشغيل الكل|الفصول|فيلم عائلي، ٥٢ دقيقة|العبور|العجلة الكبيرة|المدينة|المنارة
hi_IN.UTF-8|समुद्र किनारे गर्मियाँ|सब चलाएँ|अध्याय|पारिवारिक फ़िल्म, 52 मिनट|समुद्री यात्रा|बड़ा झूला|शहर|प्रकाशस्तंभ
th_TH.UTF-8|ฤดูร้อนริมทะเล|เล่นทั้งหมด|บทต่าง ๆ|ภาพยนตร์ครอบครัว 52 นาที|การเดินทางข้ามฟาก|ชิงช้าสวรรค์ที่ใหญ่|เมือง|ประภาคาร
zh_CN.UTF-8|海边的夏天|全部播放|章节|家庭影片,52分钟|渡海|摩天轮|城市|灯塔
ja_JP.UTF-8|海辺の夏|すべて再生|チャプター|家族の映画、52分|船旅|大観覧車|町|灯台
ko_KR.UTF-8|바닷가의 여름|모두 재생|장면 선택|가족 영화, 52분|바다를 건너|대관람차|도시|등대
END

mkdir -p "$(dirname "$sheet")"
for kind in menu jacket; do
    montage "$work/$kind"-*.png -background gray20 -geometry +6+6 -tile 4x "$work/$kind.png"
done
convert "$work/menu.png" "$work/jacket.png" -background gray20 -gravity center -append \
    +repage "$sheet"
echo "$sheet"
