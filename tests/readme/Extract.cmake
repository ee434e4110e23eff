# Writes the first C++ block of the file ${readme} to example.cpp and the text block behind it to example.txt.

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
cut(cpp example.cpp)
cut(text example.txt)
