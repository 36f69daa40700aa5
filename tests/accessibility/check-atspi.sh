#!/usr/bin/env bash
# Starts the real program on a PDF under Xvfb with a private session bus and the AT-SPI registry,
# and checks what a screen reader gets over AT-SPI: the tab as a page tab with its title and close
# button, and the page's text. Usage: check-atspi.sh <program> <source dir>
set -uo pipefail
program=$1
source=$2
for tool in xvfb-run dbus-run-session /usr/libexec/at-spi-bus-launcher; do
    command -v "$tool" >/dev/null || { echo "SKIP: $tool is not installed"; exit 0; }
done
/usr/bin/python3 -c "import pyatspi" 2>/dev/null || { echo "SKIP: python3-pyatspi is not installed"; exit 0; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
/usr/bin/python3 - "$work/Reading Sample.pdf" <<'PY'
import sys
text = b"BT /F1 18 Tf 72 720 Td (Screen readers read this line) Tj 0 -24 Td (and then this one) Tj ET"
objects = [b"<< /Type /Catalog /Pages 2 0 R >>", b"<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
    b"<< /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] /Contents 4 0 R "
    b"/Resources << /Font << /F1 5 0 R >> >> >>",
    b"<< /Length %d >>\nstream\n" % len(text) + text + b"\nendstream",
    b"<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>"]
out = bytearray(b"%PDF-1.4\n")
offsets = []
for i, body in enumerate(objects, 1):
    offsets.append(len(out))
    out += b"%d 0 obj\n" % i + body + b"\nendobj\n"
xref = len(out)
out += b"xref\n0 %d\n0000000000 65535 f \n" % (len(objects) + 1)
out += b"".join(b"%010d 00000 n \n" % o for o in offsets)
out += b"trailer\n<< /Size %d /Root 1 0 R >>\nstartxref\n%d\n%%%%EOF\n" % (len(objects) + 1, xref)
open(sys.argv[1], "wb").write(out)
PY

cat > "$work/session.sh" <<EOF
export HOME="$work/home" XDG_CONFIG_HOME="$work/config" XDG_DATA_HOME="$work/data" XDG_CACHE_HOME="$work/cache"
export QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 QT_QPA_PLATFORM=xcb
/usr/libexec/at-spi-bus-launcher --launch-immediately >/dev/null 2>&1 &
launcher=\$!
sleep 1
"$program" "$work/Reading Sample.pdf" >"$work/program.log" 2>&1 &
app=\$!
for _ in \$(seq 20); do
    sleep 1
    /usr/bin/python3 "$source/scripts/accessibility-tree.py" Folidoc >"$work/tree.txt" 2>&1 \
        && grep -q "text:" "$work/tree.txt" && break
done
kill \$app \$launcher 2>/dev/null
EOF
timeout 100 xvfb-run -a -s "-screen 0 1280x900x24" dbus-run-session -- bash "$work/session.sh" 2>/dev/null
grep -v "menu item\|popup menu\|separator" "$work/tree.txt"

failed=0
check() {
    if grep -qE "$1" "$work/tree.txt"; then echo "PASS: $2"; else echo "FAIL: $2"; failed=$((failed + 1)); fi
}
check "^\s*\[page tab list\] 'Tabs'" "the tab strip is a page tab list"
check "^\s*\[page tab\] 'Reading Sample' selected" "the document's tab is a selected page tab with its title"
check "^\s*\[push button\] 'Close Tab' actions: Press" "the tab has a close button"
check "^\s*\[document frame\] 'Reading Sample.pdf'" "the reading view is a document named by its file"
check "^\s*\[section\] 'Page 1' text: [0-9]+ characters, first line 'Screen readers read this line'" \
    "the page offers its text"
echo "$((5 - failed)) passed, $failed failed"
[ "$failed" -eq 0 ]
