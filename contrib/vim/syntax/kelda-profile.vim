" Vim syntax file
" Language: KeldaBase profile files, kelda-profile(5)
" Printed by kelda_vim_syntax profile from the words that the library knows: change those.

if exists('b:current_syntax')
  finish
endif
let s:cpo = &cpo
set cpo&vim
syn case ignore

" Tokens and aliases.
syn match keldaProfileToken /%\w\+\$\?/
syn match keldaProfileKnown /\V%cellPath\m\>/ contained containedin=keldaProfileToken " "cell/%cellId"
syn match keldaProfileKnown /\V%peerCellPath\m\>/ contained containedin=keldaProfileToken " "cell/%peerCellId"
syn match keldaProfileKnown /\V%cellId\m\>/ contained containedin=keldaProfileToken " the id of this cell
syn match keldaProfileKnown /\V%peerCellId\m\>/ contained containedin=keldaProfileToken " the id of the peer cell
syn match keldaProfileKnown /\V%sysname\m\>/ contained containedin=keldaProfileToken " the name of the system
syn match keldaProfileKnown /\V%sliceId\m\>/ contained containedin=keldaProfileToken " "FixedSystem"
syn match keldaProfileKnown /\V%agentString\m\>/ contained containedin=keldaProfileToken " the agent string that loads the profile

" Path lines: a path, a type, flags.
syn match keldaProfilePath /^[^,#]\+\ze,/ contains=keldaProfileToken,keldaProfileKeyword nextgroup=keldaProfileTypeComma
syn match keldaProfileTypeComma /,/ contained skipwhite skipnl nextgroup=keldaProfileTypeContinued,keldaProfileType
syn match keldaProfileTypeContinued /\\$/ contained skipwhite skipnl nextgroup=keldaProfileType
syn match keldaProfileType /[^,#\\[:blank:]][^,#\\]*/ contained nextgroup=keldaProfileLastComma
syn match keldaProfileLastComma /,/ contained skipwhite skipnl nextgroup=keldaProfileLastContinued,keldaProfileLast
syn match keldaProfileLastContinued /\\$/ contained skipwhite skipnl nextgroup=keldaProfileLast
syn match keldaProfileLast /[^#\\[:blank:]]\+/ contained skipwhite nextgroup=keldaProfileLast contains=keldaProfileFlags
syn case match
syn match keldaProfileFlags /[wrcifSDdOAKLtpCneySNAE]\+/ contained
syn case ignore

" Keywords begin a line; some are the whole line.
syn match keldaProfileKeyword /^\s*\VagentName:/ " the agents that load the profile
syn match keldaProfileKeyword /^\s*\VactiveMount\m\s*\($\|#\)\@=/ " the agent mounts actively
syn match keldaProfileKeyword /^\s*\Valias:/ " a name for a piece of a path
syn match keldaProfileKeyword /^\s*\VMountGroup:/ " the group of the paths that follow
syn match keldaProfileKeyword /^\s*\VnoDefaultMountGroup\m\s*\($\|#\)\@=/ " the agent has no default group
syn match keldaProfileKeyword /^\s*\VmatchActiveName\m\s*\($\|#\)\@=/ " "-Active-" agents load the profile, too
syn match keldaProfileKeyword /^\s*\VsubAgent:/ " a further agent that this one serves
syn match keldaProfileKeyword /^\s*\VCondition:/ " when the paths that follow are mounted
syn match keldaProfileKeyword /^\s*\VConditionBlocker:/ " when the paths that follow are not mounted
syn match keldaProfileKeyword /^\s*\VrootFlags:/ " the flags of the root
syn match keldaProfileKeyword /^\s*\VconnectionFlags:/ " the flags of the connection
syn match keldaProfileKeyword /^\s*\VInclude:/ " reads the paths of other files
syn match keldaProfileOperator /[?:~=]/ contained
syn match keldaProfileAlias /^\s*alias:.*$/ contains=keldaProfileKeyword,keldaProfileToken,keldaProfileOperator,keldaProfileComment
syn match keldaProfileAgentName /^\s*agentName:.*$/ contains=keldaProfileKeyword,keldaProfileToken

" Comments, and those that kelda check reads.
syn match keldaProfileComment /#.*$/ contains=keldaProfileAllow,keldaProfileTodo
syn match keldaProfileAllow /#\s*\zskelda: allow\(-file\)\?\>/ contained
syn keyword keldaProfileTodo TODO FIXME contained
syn match keldaProfileContinued /\\$/

hi def link keldaProfileKeyword Statement
hi def link keldaProfileType Type
hi def link keldaProfileToken Identifier
hi def link keldaProfileKnown Constant
hi def link keldaProfileComment Comment
hi def link keldaProfileAllow PreProc
hi def link keldaProfileTodo Todo
hi def link keldaProfileContinued Special
hi def link keldaProfileTypeContinued Special
hi def link keldaProfileLastContinued Special
hi def link keldaProfileFlags StorageClass
hi def link keldaProfileLast Error
hi def link keldaProfileOperator Operator
hi def link keldaProfileAgentName Title

let b:current_syntax = 'kelda-profile'
let &cpo = s:cpo
unlet s:cpo
