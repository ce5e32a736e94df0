" Vim syntax file
" Language: KeldaBase preinit files, kelda-preinit(5)
" Printed by kelda_vim_syntax preinit from the words that the library knows: change those.

if exists('b:current_syntax')
  finish
endif
let s:cpo = &cpo
set cpo&vim
syn case ignore

" Tokens and aliases.
syn match keldaPreinitToken /%\w\+\$\?/
syn match keldaPreinitKnown /\V%cellPath\m\>/ contained containedin=keldaPreinitToken " "cell/%cellId"
syn match keldaPreinitKnown /\V%peerCellPath\m\>/ contained containedin=keldaPreinitToken " "cell/%peerCellId"
syn match keldaPreinitKnown /\V%cellId\m\>/ contained containedin=keldaPreinitToken " the id of this cell
syn match keldaPreinitKnown /\V%peerCellId\m\>/ contained containedin=keldaPreinitToken " the id of the peer cell
syn match keldaPreinitKnown /\V%sysname\m\>/ contained containedin=keldaPreinitToken " the name of the system
syn match keldaPreinitKnown /\V%sliceId\m\>/ contained containedin=keldaPreinitToken " "FixedSystem"
syn match keldaPreinitKnown /\V%agentString\m\>/ contained containedin=keldaPreinitToken " the agent string that loads the profile

" Path lines: a path, a type, an attribute.
syn match keldaPreinitPath /^[^,#]\+\ze,/ contains=keldaPreinitToken,keldaPreinitKeyword nextgroup=keldaPreinitTypeComma
syn match keldaPreinitTypeComma /,/ contained skipwhite skipnl nextgroup=keldaPreinitTypeContinued,keldaPreinitType
syn match keldaPreinitTypeContinued /\\$/ contained skipwhite skipnl nextgroup=keldaPreinitType
syn match keldaPreinitType /[^,#\\[:blank:]][^,#\\]*/ contained nextgroup=keldaPreinitLastComma
syn match keldaPreinitLastComma /,/ contained skipwhite skipnl nextgroup=keldaPreinitLastContinued,keldaPreinitLast
syn match keldaPreinitLastContinued /\\$/ contained skipwhite skipnl nextgroup=keldaPreinitLast
syn match keldaPreinitLast /[^#\\[:blank:]]\+/ contained skipwhite nextgroup=keldaPreinitLast contains=keldaPreinitAttribute
syn match keldaPreinitAttribute /\<\VcreateOnMount\m\>/ contained " the path is created when an agent mounts it
syn match keldaPreinitAttribute /\<\VcreateOnStandby\m\>/ contained " the path is created on the standby side
syn match keldaPreinitKeyword /^\s*\VCONFIG:/ contained " the path is a config path

" Comments, and those that kelda check reads.
syn match keldaPreinitComment /#.*$/ contains=keldaPreinitAllow,keldaPreinitTodo
syn match keldaPreinitAllow /#\s*\zskelda: allow\(-file\)\?\>/ contained
syn keyword keldaPreinitTodo TODO FIXME contained
syn match keldaPreinitContinued /\\$/

hi def link keldaPreinitKeyword Statement
hi def link keldaPreinitType Type
hi def link keldaPreinitToken Identifier
hi def link keldaPreinitKnown Constant
hi def link keldaPreinitComment Comment
hi def link keldaPreinitAllow PreProc
hi def link keldaPreinitTodo Todo
hi def link keldaPreinitContinued Special
hi def link keldaPreinitTypeContinued Special
hi def link keldaPreinitLastContinued Special
hi def link keldaPreinitAttribute StorageClass
hi def link keldaPreinitLast Error

let b:current_syntax = 'kelda-preinit'
let &cpo = s:cpo
unlet s:cpo
