# Writes to files what the file ${readme} shows: to run.txt what scripts/run prints, up to where it is abridged
# by a line of dots; to example.cpp the first C++ block; to example.txt the text block behind it.

# cut(language out): the first block of that language goes to the file out, and text holds what follows it.
macro(cut language out)
    string(FIND "${text}" "```${language}\n" begin)
    if(begin EQUAL -1)
        message(FATAL_ERROR "${readme} has no block of ${language}")
    endif()
    string(LENGTH "```${language}\n" fence)
    math(EXPR begin "${begin} + ${fence}")
    string(SUBSTRING "${text}" ${begin} -1 text)
    string(FIND "${text}" "```" end)
    string(SUBSTRING "${text}" 0 ${end} block)
    file(WRITE ${out} "${block}")
    string(SUBSTRING "${text}" ${end} -1 text)
endmacro()

file(READ "${readme}" text)
cut(console run.txt)
string(FIND "${block}" "\n" begin) # of the line behind the command
math(EXPR begin "${begin} + 1")
string(FIND "${block}" "...\n" end)
math(EXPR length "${end} - ${begin}")
string(SUBSTRING "${block}" ${begin} ${length} run)
file(WRITE run.txt "${run}")
cut(cpp example.cpp)
cut(text example.txt)
