#!/bin/sh
# Prints the picture of a receipt: printtocups2.sh SNAPSHOT.jpg
#
# It goes to the default printer, or to the only one there is. Says "no-printers-available" when there is none
# that would print it now. The blank end is cut off, the rest made as wide as the paper; a printer with paper
# from the roll feeds as much as the receipt is long, one with sheets gets as many as it takes. Needs CUPS'
# client tools and netpbm; what goes wrong is told on standard error. A file of this name on the desktop, or
# beside the application, is run in its place.
set -u
export LC_ALL=C

# A print service that does not answer must not keep the customer waiting.
PATIENCE=20
# How much of a picture's range of brightness still counts as white, in percent: JPEG blurs a little.
WHITE=4

say() {
  printf 'printtocups2: %s\n' "$*" >&2
}
no_printer() {
  say "$*"
  printf 'no-printers-available\n'
  exit 0
}
ask() {
  timeout "$PATIENCE" "$@" </dev/null 2>/dev/null
}

if [ $# -ne 1 ] || ! [ -f "$1" ]; then
  say "the picture of the receipt is missing"
  exit 2
fi
for tool in lp lpstat lpoptions jpegtopnm pnmcrop pamfile pamcut pnmpad pnmtojpeg; do
  if ! command -v "$tool" >/dev/null; then
    say "$tool is missing; install cups-client and netpbm"
    exit 1
  fi
done

# The printer.
[ "$(ask lpstat -r)" = "scheduler is running" ] || no_printer "the print service does not run"
printer=$(ask lpstat -d | sed -n 's/^system default destination: //p')
if [ -z "$printer" ]; then
  # Queues that somebody set up; else what the network shows.
  queues=$(ask lpstat -a | sed 's/ .*//')
  [ -n "$queues" ] || queues=$(ask lpstat -e)
  [ -n "$queues" ] || no_printer "there is no printer"
  case $queues in *"
"*) no_printer "there are several printers and none is the default: $(echo $queues)" ;; esac
  printer=$queues
fi
case $(ask lpstat -p "$printer") in *" disabled since "*) no_printer "$printer is disabled" ;; esac
case $(ask lpstat -a "$printer") in *" not accepting requests "*) no_printer "$printer takes no jobs" ;; esac
options=$(ask lpoptions -p "$printer")
case $options in
  *printer-state-reasons=*offline* | *printer-state-reasons=*shutdown*) no_printer "$printer is off" ;;
esac

folder=$(mktemp -d) || exit 1
trap 'rm -rf "$folder"' EXIT
trap 'exit 1' HUP INT TERM

# The receipt without its blank end.
if ! jpegtopnm -quiet "$1" >"$folder/whole.pnm" ||
  ! pnmcrop -quiet -bottom -white -closeness="$WHITE" -blank-image=minimize \
    "$folder/whole.pnm" >"$folder/receipt.pnm"; then
  say "the picture $1 cannot be read"
  exit 1
fi
read -r width height <<END
$(pamfile -machine <"$folder/receipt.pnm" | awk '{ print $4, $5 }')
END

# The paper, as the printer's attributes tell: the size of the usual sheet or piece of roll, the margins, and
# the sizes between which it may be any. Lengths in hundredths of a millimetre.
cat >"$folder/paper.test" <<'END'
{
  OPERATION Get-Printer-Attributes
  GROUP operation-attributes-tag
  ATTR charset attributes-charset utf-8
  ATTR naturalLanguage attributes-natural-language en
  ATTR uri printer-uri $uri
  ATTR keyword requested-attributes media-default,media-supported,media-left-margin-supported,media-right-margin-supported,media-top-margin-supported,media-bottom-margin-supported
}
END
uri=$(printf '%s\n' "$options" | tr ' ' '\n' | sed -n 's/^printer-uri-supported=//p')
paper=""
if [ -n "$uri" ] && command -v ipptool >/dev/null; then
  paper=$(ask ipptool -tv "$uri" "$folder/paper.test" | awk -v pixels="$width" -v lines="$height" '
    # The size at the end of a name such as iso_a4_210x297mm.
    function size(name, result,    parts, sides, count, unit) {
      count = split(name, parts, "_")
      unit = parts[count] ~ /mm$/ ? 100 : parts[count] ~ /in$/ ? 2540 : 0
      sub(/(mm|in)$/, "", parts[count])
      if (!unit || split(parts[count], sides, "x") != 2) return 0
      result["width"] = sides[1] * unit
      result["height"] = sides[2] * unit
      return result["width"] > 0 && result["height"] > 0
    }
    function largest(list,    values, count, i, most) {
      count = split(list, values, ",")
      for (i = 1; i <= count; i++) if (values[i] + 0 > most) most = values[i] + 0
      return most + 0
    }
    function ceiling(number) { return number == int(number) ? number : int(number) + 1 }
    / = / {
      name = $1
      sub(/^[^=]* = /, "")
      attribute[name] = $0
    }
    END {
      if (!size(attribute["media-default"], usual)) exit
      across = usual["width"] - largest(attribute["media-left-margin-supported"]) \
               - largest(attribute["media-right-margin-supported"])
      along = largest(attribute["media-top-margin-supported"]) + largest(attribute["media-bottom-margin-supported"])
      if (across <= 0) exit
      count = split(attribute["media-supported"], media, ",")
      for (i = 1; i <= count; i++) {
        if (media[i] ~ /^custom_min_/) hasLeast = size(media[i], least)
        if (media[i] ~ /^custom_max_/) hasMost = size(media[i], most)
      }
      # What the receipt takes, if the paper may be of any length.
      length_ = across * lines / pixels + along
      custom = hasLeast && hasMost && usual["width"] >= least["width"] && usual["width"] <= most["width"]
      if (!custom) length_ = usual["height"]
      else if (length_ < least["height"]) length_ = least["height"]
      else if (length_ > most["height"]) length_ = most["height"]
      if (length_ <= along) exit
      # Of the picture, a page takes so many lines.
      page = int((length_ - along) * pixels / across + 0.5)
      if (page < 1) exit
      media_ = custom ? sprintf("Custom.%.2fx%.2fmm", usual["width"] / 100, length_ / 100) : "-"
      print page, ceiling(lines / page), media_
    }')
fi
read -r page pages media <<END
${paper:-$height 1 -}
END

# One picture for each page; the last one is filled up, else it would be drawn larger than the others.
set --
number=0
while [ "$number" -lt "$pages" ]; do
  top=$((number * page))
  part=$((height - top < page ? height - top : page))
  number=$((number + 1))
  file=$folder/$(printf 'page%03d.jpg' "$number")
  if ! pamcut -top="$top" -height="$part" "$folder/receipt.pnm" 2>/dev/null |
    pnmpad -white -height="$page" -valign=0 2>/dev/null | pnmtojpeg -quality=100 -sample=1x1 >"$file" 2>/dev/null; then
    say "page $number of the receipt cannot be made"
    exit 1
  fi
  set -- "$@" "$file"
done

[ "$media" = "-" ] || set -- -o "media=$media" "$@"
if ! timeout "$PATIENCE" lp -d "$printer" -t Receipt -o print-scaling=fit -o fit-to-page "$@" </dev/null; then
  say "$printer did not take the receipt"
  exit 1
fi
