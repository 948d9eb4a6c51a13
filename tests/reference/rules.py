"""The codes of the rules that random requests meet.

The others need memory to run out (json.memory, project.memory, file.mapping), a file that fails
while it is read (project.unreadable), or a record that no reader makes (request.mode-unknown).
"""

RULES = frozenset("""
base64.character base64.length base64.padding
data.empty
file.directory file.empty file.no-bytes file.no-regular file.open file.too-large
form.body-empty form.length-range form.length-unset form.length-zero
json.body-short json.length-unset json.length-zero json.member-type json.no-object json.number
json.syntax json.zero-byte
key.absent key.bits-differ key.degree key.no-bits key.too-large key.too-many-bits key.unsound
key.zero-scalar
project.digest project.directory project.entries project.entry-empty project.entry-range
project.header project.magic project.no-body project.no-regular project.open
request.data-encoding request.mode request.no-input request.no-signature request.project
request.two-inputs
signature.empty signature.groups signature.made signature.mismatch signature.no-bytes
signature.none signature.odd signature.padding signature.r-padded signature.r-range
signature.r-zero signature.s-range signature.s-zero signature.too-long signature.too-many-bytes
signature.valid
""".split())

# Those under which the program ends without a response.
ENDS = frozenset("""
form.length-impossible form.length-memory json.length-impossible json.length-memory
""".split())
