# The items of a report: gawk -b -f extract.awk -- KIND FILE. Keeps them, prints their number.
function trim(text) {
    sub(/^[ \t]+/, "", text)
    sub(/[ \t\r\n]+$/, "", text)
    return text
}
function add(parent, name, value) {
    parents[++count] = parent
    names[count] = name
    values[count] = value
    flags[count] = "TRUE"
}
function add_row(    i) {
    add(section, "SMART Detail", "")
    id = $1
    name = trim(substr($0, 5, 40))
    $0 = substr($0, 46)
    add("SMART Detail", "ID", id)
    add("SMART Detail", "Attribute", name)
    for (i = 1; i <= 4; i++) add("SMART Detail", columns[i], $i)
}
function add_drive(    open, parts) {
    open = index($0, "(")
    add(section, "LD List", "")
    add("LD List", "LD No.", trim(substr($0, 2, open - 2)))
    match($0, /\((.*),([^,]*),([^,]*)\)/, parts)
    add("LD List", "State", trim(parts[3]))
    add("LD List", "Capacity", trim(parts[2]))
    add("LD List", "Name", trim(parts[1]))
}
BEGIN {
    kind = ARGV[1]
    ARGV[1] = ""
    split("Current Worst Raw Threshold", columns, " ")
    heads["ctrl"] = "^RAID Controller.*:"
    heads["ld"] = "^(RG|sRG|scRG)[0-9]"
    heads["pd"] = heads["smart"] = "^PD[0-9]"
    heads["pssd"] = "^Bus"
    head = heads[kind]
}
table { if ($0 !~ /^---/ && NF > 0) add_row(); next }
$0 ~ head { root = section = trim($0); add("", root, ""); next }
/^### / { section = trim($0); add(root, section, ""); next }
kind == "smart" && /^ID .*Attribute/ { table = 1; next }
/^>>PD/ {
    add(section, "PD List", "")
    add("PD List", "PD No.", trim(substr($0, 3, index($0, "(") - 3)))
    next
}
/^>LD/ { add_drive(); next }
{
    colon = index($0, ":")
    if (colon > 1) add(section, trim(substr($0, 1, colon - 1)), trim(substr($0, colon + 1)))
}
END { print count }
