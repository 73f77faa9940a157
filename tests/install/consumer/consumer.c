#include <tesmo_hbbtv/tesmo_hbbtv.h>

int main(void)
{
    return tesmo_hbbtv_add_log_output(4, 0) ? 0 : 1;
}
