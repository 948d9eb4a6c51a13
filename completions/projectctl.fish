# Completion of projectctl for fish.

# Whether the command line names this command.
function __projectctl_uses
    set -l words (commandline -opc)
    test "$words[2]" = $argv[1]
end

# Whether none of these options stands in front of the cursor.
function __projectctl_lacks
    set -l words (commandline -opc)
    for option in $argv
        if string match -q -- $option $words; or string match -q -- "$option=*" $words
            return 1
        end
    end
end

# Whether this option is not used yet. It may be the last word, whose value is being completed.
function __projectctl_is_unused
    set -l words (commandline -opc)
    set -e words[-1]
    for word in $words
        if string match -q -- $argv[1] $word; or string match -q -- "$argv[1]=*" $word
            return 1
        end
    end
end

# Whether the next operand is the name of a file.
function __projectctl_takes_file
    set -l operands 0
    set -l most 1
    set -l is_value 0
    set -l words (commandline -opc)
    for word in $words[3..]
        if test $is_value = 1
            set is_value 0
            continue
        end
        switch $word
            case '--*=*'
            case --base --from-scalar -o --output --signature-file --check --from --to
                set is_value 1
            case '-?*'
            case '*'
                set operands (math $operands + 1)
        end
    end
    switch "$words[2]"
        case create show check export convert digest
        case strip
            set most 2
        case sign
            return 0
        case verify
            if not __projectctl_lacks --check
                set most 1
            else if not __projectctl_lacks --signature-file
                set most 2
            else
                # A signature is not the name of a file.
                test $operands = 0 -o $operands = 2
                return
            end
        case '*'
            return 1
    end
    test $operands -lt $most
end

# Adds a command and its description.
function __projectctl_command
    complete -c projectctl -n 'test (count (commandline -opc)) = 1' -a $argv[1] -d $argv[2]
    if test $argv[1] != help
        complete -c projectctl -n '__projectctl_uses help; and test (count (commandline -opc)) = 2' \
            -a $argv[1] -d $argv[2]
        __projectctl_flag $argv[1] help 'Print this help and exit'
    end
end

# Adds an option without a value: COMMAND NAME DESCRIPTION [OPTION THAT IT CANNOT STAND BESIDE]...
function __projectctl_flag
    complete -c projectctl -l $argv[2] -d $argv[3] \
        -n "__projectctl_uses $argv[1]; and __projectctl_lacks --$argv[2] $argv[4..]"
end

# Adds one with a value: COMMAND NAME DESCRIPTION VALUE [OPTION THAT IT CANNOT STAND BESIDE]...
# The value is FILE, or TEXT, or words of which it is one.
function __projectctl_option
    set -l value -x -a $argv[4]
    switch $argv[4]
        case FILE
            set value -r -F
        case TEXT
            set value -x
    end
    complete -c projectctl -l $argv[2] -d $argv[3] $value \
        -n "__projectctl_uses $argv[1]; and __projectctl_is_unused --$argv[2]; and __projectctl_lacks $argv[5..]"
end

complete -c projectctl -f
complete -c projectctl -n __projectctl_takes_file -F
complete -c projectctl -n 'test (count (commandline -opc)) = 1' -l help -s h -d 'Print the commands and exit'
complete -c projectctl -n 'test (count (commandline -opc)) = 1' -l version -d 'Print the version and exit'

__projectctl_command create 'Make a project with a fresh key'
__projectctl_command show 'Show the attributes of a project'
__projectctl_command check 'Check a project for errors'
__projectctl_command strip 'Copy a project without its private scalar'
__projectctl_command sign 'Sign files or standard input'
__projectctl_command verify 'Verify a signature of a file, or a list of them'
__projectctl_command explain 'Explain how the program answers a request'
__projectctl_command export 'Print the public key as PEM'
__projectctl_command convert 'Convert a signature for other software'
__projectctl_command digest 'Write the digest of a file for other software'
__projectctl_command help 'Print the help of a command'

__projectctl_option create base 'Choose the base point' 'random standard'
__projectctl_option create from-scalar 'Read the private scalar from a file' FILE
__projectctl_flag show secret 'Show the private scalar too'
complete -c projectctl -s o -l output -d 'Write to a new file' -r -F \
    -n '__projectctl_uses sign; and __projectctl_is_unused --output; and __projectctl_is_unused -o'
__projectctl_flag export private 'Print the private key'
for command in show check sign verify explain export digest
    __projectctl_flag $command json 'Print one line of JSON'
end

__projectctl_option verify signature-file 'Read the signature from a file' FILE \
    --check --ignore-missing --quiet --status
__projectctl_option verify check 'Verify a list' FILE --signature-file
__projectctl_flag verify ignore-missing 'Say nothing of missing files' --signature-file
__projectctl_flag verify quiet 'Print no line for a file that is OK' --signature-file
__projectctl_flag verify status 'Print nothing' --signature-file

__projectctl_option convert from 'The form of the signature' 'text der hex'
__projectctl_option convert to 'The form to write' 'text der hex' --json
__projectctl_flag convert json 'Print one line of JSON' --to

set -l raw --body --content-type --content-length --no-content-length
set -l asked --project --data --data-encoding --file --signature
__projectctl_flag explain rules 'List all rules' $raw $asked
__projectctl_option explain body 'The body of a request' FILE $asked --rules
__projectctl_option explain content-type CONTENT_TYPE \
    'application/json application/x-www-form-urlencoded' $asked --rules
__projectctl_option explain content-length CONTENT_LENGTH TEXT \
    $asked --rules --no-content-length
__projectctl_flag explain no-content-length 'CONTENT_LENGTH is not set' \
    $asked --rules --content-length
__projectctl_option explain project 'The project file' FILE $raw --rules
__projectctl_option explain data 'The data' TEXT $raw --rules --file
__projectctl_option explain data-encoding 'How the data is written' 'plain base64' $raw --rules
__projectctl_option explain file 'The file' FILE $raw --rules --data
__projectctl_option explain signature 'The signature' TEXT $raw --rules
