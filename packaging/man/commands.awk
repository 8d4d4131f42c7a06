# Makes sections of a manual page of the texts of "PROGRAM COMMAND --help", each in a file of the
# command's name: COMMANDS has what is one command's own, OPTIONS what several have in common, and
# EXIT STATUS the statuses that are not one command's. Examples are left out: they stand in the
# page, where a test runs them.
#
#     help   = description usage words options { paragraph }
#     words  = [ "Positionals:" { item } ]
#     item   = "  " name at column 30: text { line at column 30 }
#
# A paragraph's lines that begin with two blanks are items, too; deeper ones go on with the item.

function is_shared(key) { return key !~ /^word/ && users[key] ~ /,/ }

# For a formatter that takes backslashes, hyphens and leading dots for its own. A sentence begins on
# a line of its own, so that its space is right.
function escaped(text,    parts, count, i, out) {
    gsub(/\\/, "\\e", text)
    gsub(/-/, "\\-", text)
    count = split(text, parts, /[.] /)
    for (i = 1; i <= count; i++) {
        if (parts[i] ~ /^[.']/) parts[i] = "\\&" parts[i]
        out = out parts[i] (i == count ? "" : parts[i + 1] ~ /^[A-Z]/ ? ".\n" : ". ")
    }
    return out
}

function keep(kind, text,    key) {
    key = kind SUBSEP text
    if (!(key in users)) keys[++key_count] = key
    users[key] = users[key] (users[key] == "" ? "" : ",") command
    item[command, ++items[command]] = key
}

function end_item() {
    if (sub(/ REQUIRED$/, "", name)) text = text "; required"
    if (name != "") keep(name ~ /^-/ ? "option" : "word", name SUBSEP text)
    name = ""
}

function end_paragraph() {
    if (paragraph != "") keep("paragraph", paragraph)
    paragraph = ""
}

function end_help() {
    end_item()
    end_paragraph()
}

FNR == 1 {
    if (command != "") end_help()
    command = FILENAME
    sub(/.*\//, "", command)
    commands[++command_count] = command
    description[command] = $0
    state = "text"
    next
}
/^Usage: / { usage[command] = substr($0, 8); next }
/^(Positionals|Options):$/ { state = "items"; next }
state == "items" && /^$/ { end_item(); state = "text"; next }
state == "items" && /^  [^ ]/ {
    end_item()
    has_text = length($0) > 30 && substr($0, 30, 1) == " "
    name = substr($0, 3, has_text ? 27 : length($0))
    sub(/ +$/, "", name)
    text = has_text ? substr($0, 31) : ""
    next
}
state == "items" { sub(/^ +/, ""); text = text (text == "" ? "" : " ") $0; next }
/^Examples?[,:]/ { end_paragraph(); state = "done" }
state == "done" { next }
/^$/ { end_paragraph(); next }
{ paragraph = paragraph (paragraph == "" ? "" : "\n") $0 }

# "  0      success" and the like as items, all else as text that is filled.
function print_paragraph(text,    lines, count, i, in_item, tag) {
    count = split(text, lines, "\n")
    if (!is_first && lines[1] !~ /^ /) print ".PP"
    is_first = 0
    for (i = 1; i <= count; i++) {
        if (lines[i] ~ /^  [^ ]/) {
            tag = substr(lines[i], 3)
            sub(/  +.*/, "", tag)
            print ".TP\n.B " escaped(tag)
            sub(/^  /, "", lines[i])
            sub(/^[^ ]+( [^ ]+)*  +/, "", lines[i])
            in_item = 1
        } else if (in_item && lines[i] !~ /^ /) {
            print ".PP"
            in_item = 0
        }
        sub(/^ +/, "", lines[i])
        print escaped(lines[i])
    }
}

function print_key(key,    parts) {
    split(key, parts, SUBSEP)
    if (parts[1] != "paragraph") {
        is_first = 0
        print ".TP\n.B " escaped(parts[2]) "\n" escaped(parts[3])
    } else {
        print_paragraph(parts[2])
    }
}

# The options of a command that the section OPTIONS describes.
function shared_names(command,    i, parts, names) {
    for (i = 1; i <= items[command]; i++) {
        split(item[command, i], parts, SUBSEP)
        if (parts[1] == "option" && is_shared(item[command, i])) {
            sub(/^-h,/, "", parts[2])
            sub(/ .*/, "", parts[2])
            names = names (names == "" ? "" : ", ") parts[2]
        }
    }
    return names
}

function print_command(command,    i, names) {
    print ".SS " program " " command
    print ".B " escaped(usage[command])
    print ".PP\n" escaped(description[command]) "."
    for (i = 1; i <= items[command]; i++) {
        if (!is_shared(item[command, i])) print_key(item[command, i])
    }
    names = shared_names(command)
    if (names != "") print ".PP\nSee OPTIONS for " escaped(names) "."
}

function heading(list,    count, names) {
    count = split(list, names, ",")
    gsub(",", ", ", list)
    return count == command_count ? "Of all commands" : \
        count == command_count - 1 && list !~ /help/ ? "Of all commands but help" : "Of " list
}

function is_status(key) { return index(key, "paragraph" SUBSEP "Exit status:") == 1 }

function print_shared(    i, k, list) {
    for (i = 1; i <= key_count; i++) {
        list = users[keys[i]]
        if (!is_shared(keys[i]) || is_status(keys[i]) || list in printed) continue
        printed[list] = 1
        print ".SS " escaped(heading(list))
        is_first = 1
        for (k = i; k <= key_count; k++) {
            if (users[keys[k]] == list && !is_status(keys[k])) print_key(keys[k])
        }
    }
}

function print_statuses(    i, text) {
    for (i = 1; i <= key_count; i++) {
        if (is_shared(keys[i]) && is_status(keys[i])) {
            text = keys[i]
            sub(/^[^\n]*\n/, "", text)
            print ".SH EXIT STATUS"
            print_paragraph(text)
            print ".PP\nWhere a command has others, COMMANDS tells them."
        }
    }
}

END {
    end_help()
    print ".SH COMMANDS"
    for (i = 1; i <= command_count; i++) print_command(commands[i])
    print ".SH OPTIONS"
    print_shared()
    print_statuses()
}
