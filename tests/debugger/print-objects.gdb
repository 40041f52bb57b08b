# Prints the objects of the program. The last commands cut lists and texts.
set confirm off
set print elements 200
set print pretty off
set charset UTF-8
break Stop
run
print text
print emptyText
print emptyDocument
print document
print element
print lightweight.m_attributes
print lightweight
print diagnostic
set print elements 3
print element
print text
